// Links in a folder of mkdtemp's.
#include "run/link-folder.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

// MorvikVM cuts the path of an application's file at 254 bytes, without a word. What the folder of
// links and the name leave is for the files' own names.
constexpr std::size_t kLongestPath = 80;
constexpr std::size_t kLongestName = 64;

std::string pattern() {
  const std::string inTemporary = fs::path(g_get_tmp_dir()) / "morvik-run-XXXXXX";
  return inTemporary.size() <= kLongestPath ? inTemporary : "/tmp/morvik-run-XXXXXX";
}

bool isBlank(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte <= 0x20 || byte == 0x7f;
}

// The last component also of "folder/" and of ".".
std::string nameOf(const fs::path& folder) {
  return folder.has_filename() ? folder.filename() : folder.parent_path().filename();
}

}  // namespace

std::string launchName(const std::string& folderName) {
  std::string name = folderName;
  std::replace_if(name.begin(), name.end(), isBlank, '-');
  if (name.size() > kLongestName) {
    std::size_t end = kLongestName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xc0U) == 0x80U) --end;
    name.resize(end);
  }
  return name.empty() ? "app" : name;
}

std::unique_ptr<LinkFolder> LinkFolder::make(std::string& trouble) {
  std::string path = pattern();
  if (mkdtemp(path.data()) == nullptr) {
    trouble = path + ": " + std::strerror(errno);
    return nullptr;
  }
  return std::unique_ptr<LinkFolder>(new LinkFolder(path));
}

LinkFolder::~LinkFolder() {
  std::error_code ignored;
  for (const std::string& name : names_) fs::remove(path_ / name, ignored);
  fs::remove(path_, ignored);
}

std::optional<std::string> LinkFolder::link(const fs::path& folder, std::string& trouble) {
  std::error_code error;
  const fs::path target = fs::canonical(folder, error);
  if (error) {
    trouble = error.message();
    return std::nullopt;
  }
  const std::string wanted = launchName(nameOf(target));
  std::string name = wanted;
  for (int count = 2; names_.contains(name); ++count) name = wanted + "-" + std::to_string(count);
  fs::create_directory_symlink(target, path_ / name, error);
  if (error) {
    trouble = error.message();
    return std::nullopt;
  }
  names_.insert(name);
  return name;
}

}  // namespace morvik::devkit
