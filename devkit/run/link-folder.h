// The folder that the launcher is given: a private one with a link to each application. So any
// folder by any path can be launched, several with parents of their own, and two that are called
// the same.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "run/file-descriptor.h"

namespace morvik::devkit {

class LinkFolder {
 public:
  /// Makes an empty folder that only this user can enter, and removes those that others like this
  /// one left behind when they were killed. Null when none can be made, with the reason in
  /// `trouble`.
  static std::unique_ptr<LinkFolder> make(std::string& trouble);
  /// Removes the links and the folder, and nothing that they lead to.
  ~LinkFolder();
  LinkFolder(const LinkFolder&) = delete;
  LinkFolder& operator=(const LinkFolder&) = delete;

  /// What `--app_folder=` takes.
  const std::filesystem::path& path() const { return path_; }

  /// Links an application's folder under a name that a launch line can carry: its own where that
  /// has neither blanks nor control characters and is not taken yet. Gives the name, or nothing and
  /// the reason in `trouble`.
  std::optional<std::string> link(const std::filesystem::path& folder, std::string& trouble);

 private:
  LinkFolder(std::filesystem::path path, FileDescriptor held)
      : path_(std::move(path)), held_(std::move(held)) {}

  std::filesystem::path path_;
  FileDescriptor held_;  // locked: tells others that it is in use
  std::set<std::string> names_;
};

/// A name in the words of a launch line: blanks and control characters become "-", a long one is
/// cut between two characters.
std::string launchName(const std::string& folderName);

}  // namespace morvik::devkit
