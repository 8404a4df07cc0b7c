// Links in a folder of mkdtemp's, which is held as long as it is used.
#include "run/link-folder.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

// MorvikVM cuts the path of an application's file at 254 bytes, without a word. What the folder of
// links and the name leave is for the files' own names.
constexpr std::size_t kLongestPath = 80;
constexpr std::size_t kLongestName = 64;

constexpr std::string_view kBegin = "morvik-run-";
constexpr std::string_view kRandom = "XXXXXX";

fs::path pattern() {
  const std::string name = std::string(kBegin) + std::string(kRandom);
  const fs::path inTemporary = fs::path(g_get_tmp_dir()) / name;
  return inTemporary.native().size() <= kLongestPath ? inTemporary : fs::path("/tmp") / name;
}

// Nothing when somebody else holds it. The kernel lets go of it however its holder ends.
FileDescriptor lockOn(const fs::path& folder) {
  FileDescriptor held(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (held.valid() && flock(held.get(), LOCK_EX | LOCK_NB) != 0) held.close();
  return held;
}

// The folder that is held is the one of that path, and belongs to this user.
bool isOwn(const FileDescriptor& held, const fs::path& folder) {
  struct stat there {};
  struct stat here {};
  return fstat(held.get(), &here) == 0 && lstat(folder.c_str(), &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino && here.st_uid == geteuid();
}

bool hasLinksAlone(const fs::path& folder) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (!entry.is_symlink(error)) return false;
  }
  return !error;
}

// Of one that was killed: nobody holds it. A folder with anything else in it is none of ours.
void removeStale(const fs::path& folder) {
  const FileDescriptor held = lockOn(folder);
  if (!held.valid() || !isOwn(held, folder) || !hasLinksAlone(folder)) return;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    unlinkat(held.get(), entry.path().filename().c_str(), 0);
  }
  fs::remove(folder, ignored);
}

void removeAllStale(const fs::path& temporary) {
  std::error_code ignored;
  std::vector<fs::path> folders;
  for (const auto& entry : fs::directory_iterator(temporary, ignored)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(kBegin) && name.size() == kBegin.size() + kRandom.size()) {
      folders.push_back(entry.path());
    }
  }
  for (const fs::path& folder : folders) removeStale(folder);
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
  removeAllStale(pattern().parent_path());
  // Another one may take a folder that is not yet held for a stale one.
  constexpr int kMostTries = 10;
  for (int tries = 0; tries < kMostTries; ++tries) {
    std::string path = pattern();
    if (mkdtemp(path.data()) == nullptr) {
      trouble = path + ": " + std::strerror(errno);
      return nullptr;
    }
    FileDescriptor held = lockOn(path);
    if (held.valid() && isOwn(held, path)) {
      return std::unique_ptr<LinkFolder>(new LinkFolder(path, std::move(held)));
    }
  }
  trouble = pattern().string() + ": cannot be held";
  return nullptr;
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
