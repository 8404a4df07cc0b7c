// A folder of a test's own that is gone after it.
#pragma once

#include <filesystem>
#include <string>

#include "device/owned.h"

namespace morvik::devkit::testing {

class TemporaryFolder {
 public:
  // It has a name; whoever needs it makes it.
  TemporaryFolder() = default;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ / name; }

 private:
  const std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / GText(g_uuid_string_random()).get();
};

}  // namespace morvik::devkit::testing
