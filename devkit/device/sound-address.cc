// One test for each kind of address.
#include "device/sound-address.h"

#include <glib.h>

#include <algorithm>
#include <memory>

#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

using UriOwned = std::unique_ptr<GUri, Release<g_uri_unref>>;
using Reason = std::optional<std::string>;

// Where a device keeps applications: what "./" becomes on the way here.
constexpr std::string_view kDeviceFolder = "/usr/morvik/apps/";
// Longer paths arrive cut.
constexpr std::size_t kLongestPath = 254;

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

// Within the folder, or nothing.
std::optional<fs::path> within(const fs::path& folder, const std::string& file) {
  const fs::path path = fs::path(file).lexically_normal();
  const bool leaves = path.is_absolute() || path.empty() || *path.begin() == "..";
  return leaves ? std::nullopt : std::optional(folder / path);
}

Reason reasonAgainstFile(const std::string& url, const std::string& file, const fs::path& folder) {
  const auto path = within(folder, file);
  if (!path) {
    return "lies outside of the application's folder, where a device has other files: keep what "
           "is played in the folder";
  }
  if (isFile(*path)) return std::nullopt;
  if (url.size() >= kLongestPath) {
    return "is a path that was cut at 254 characters, and there is no such file: choose a shorter "
           "name";
  }
  return "is not in the application's folder: put the file there, or correct the name";
}

Reason reasonAgainstAppFile(const std::string& url, const AppFolders& folders) {
  if (folders.empty()) return std::nullopt;
  const std::string rest = url.substr(kDeviceFolder.size());
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  const auto folder = folders.find(rest.substr(0, slash));
  if (folder == folders.end()) {
    return "belongs to an application that is not here: play files of the own folder, as ./NAME";
  }
  return reasonAgainstFile(url, rest.substr(std::min(slash + 1, rest.size())), folder->second);
}

// By its form. What has no scheme is no address.
Reason reasonAgainstAddress(const std::string& url) {
  const UriOwned uri(g_uri_parse(url.c_str(), G_URI_FLAGS_NONE, nullptr));
  const std::string scheme = uri ? g_uri_get_scheme(uri.get()) : "";
  if (!uri) return "is not well-formed as an address: write http://HOST/PATH";
  if (scheme != "http" && scheme != "https") {
    return "begins with " + scheme + ":, which a device may not know: use http or https";
  }
  const char* host = g_uri_get_host(uri.get());
  if (host == nullptr || *host == '\0') return "names no host: write http://HOST/PATH";
  return std::nullopt;
}

Reason reasonAgainst(const std::string& url, const AppFolders& folders) {
  if (url.empty()) return "names nothing: name a file or an address";
  if (url.starts_with(kDeviceFolder)) return reasonAgainstAppFile(url, folders);
  if (url.starts_with('/')) {
    if (isFile(url)) return std::nullopt;
    return "is not on this machine, and a device looks among its own files: take it into the "
           "folder, as ./NAME, or make sure that the device has it";
  }
  const GText scheme(g_uri_parse_scheme(url.c_str()));
  if (scheme) return reasonAgainstAddress(url);
  return "is neither a whole path nor an address: write ./NAME for a file of the application's "
         "folder";
}

// As the script wrote it, where that is clear.
std::string asPlayed(const std::string& url) {
  const bool isOfApp = url.starts_with(kDeviceFolder);
  const std::size_t slash = isOfApp ? url.find('/', kDeviceFolder.size()) : std::string::npos;
  return slash != std::string::npos ? "." + url.substr(slash) : url;
}

}  // namespace

std::optional<Doubt> doubtOfSound(const std::string& url, const Library& library,
                                  const AppFolders& folders) {
  if (std::ranges::find(library.songs, url) != library.songs.end()) return std::nullopt;
  const Reason reason = reasonAgainst(url, folders);
  if (!reason) return std::nullopt;
  const std::string played = asPlayed(url);
  return Doubt{Doubt::About::kSound, played, "play: " + cited(played) + ' ' + *reason};
}

}  // namespace morvik::devkit
