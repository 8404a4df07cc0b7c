// std::filesystem's copy, entry by entry.
#include "test/temporary-copy.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

void copyVisible(const fs::path& from, const fs::path& to) {
  fs::create_directories(to);
  for (const auto& entry : fs::directory_iterator(from)) {
    const bool isHidden = entry.path().filename().string().starts_with('.');
    if (entry.is_directory() && !isHidden) copyVisible(entry.path(), to / entry.path().filename());
    if (entry.is_regular_file()) fs::copy_file(entry.path(), to / entry.path().filename());
  }
}

// Within the copy alone.
bool isInside(const fs::path& name) {
  return name.is_relative() && std::ranges::find(name, "..") == name.end();
}

bool change(const fs::path& file, const std::optional<std::string>& content, std::string& trouble) {
  if (!content) return fs::remove(file), true;
  GErrorOwned error;
  fs::create_directories(file.parent_path());
  if (g_file_set_contents(file.c_str(), content->data(), static_cast<gssize>(content->size()),
                          error.out()) != FALSE) {
    return true;
  }
  trouble = error.text();
  return false;
}

}  // namespace

TemporaryCopy::~TemporaryCopy() {
  std::error_code ignored;
  if (!place_.empty()) fs::remove_all(place_, ignored);
}

bool TemporaryCopy::make(const fs::path& folder,
                         const std::map<std::string, std::optional<std::string>>& files,
                         std::string& trouble) {
  std::string place = (fs::path(g_get_tmp_dir()) / "morvik-test-XXXXXX").string();
  if (mkdtemp(place.data()) == nullptr) {
    trouble = place + ": " + std::strerror(errno);
    return false;
  }
  place_ = place;
  try {
    path_ = place_ / fs::canonical(folder).filename();
    copyVisible(folder, path_);
    for (const auto& [name, content] : files) {
      if (!isInside(name)) {
        trouble = name + " is no file of the application's folder";
        return false;
      }
      if (!change(path_ / name, content, trouble)) return false;
    }
  } catch (const fs::filesystem_error& error) {
    trouble = error.what();
    return false;
  }
  return true;
}

}  // namespace morvik::devkit
