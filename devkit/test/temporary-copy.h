// A copy of an application's folder for one test, so that what a test does to its files is gone
// with it.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace morvik::devkit {

class TemporaryCopy {
 public:
  TemporaryCopy() = default;
  /// Removes it.
  ~TemporaryCopy();
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;

  /// Copies a folder, under its name, with these contents in place of its own, and without the
  /// files that have none here. Folders whose names begin with a dot are left out. False with the
  /// reason in `trouble`. Called once.
  [[nodiscard]] bool make(const std::filesystem::path& folder,
                          const std::map<std::string, std::optional<std::string>>& files,
                          std::string& trouble);

  const std::filesystem::path& path() const { return path_; }
  /// The folder that it stands in, which only this user can enter.
  const std::filesystem::path& place() const { return place_; }

 private:
  std::filesystem::path place_;
  std::filesystem::path path_;
};

}  // namespace morvik::devkit
