// What descriptor.xml grants, and what its author may have meant.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "run/folder.h"

namespace morvik::devkit {

struct Place {
  int line = 0;
  int column = 0;
};

struct Grants {
  /// False when the file cannot be read or is too large: then nothing is known.
  bool known = false;
  /// The names that the host takes, and where each stands.
  std::map<std::string, Place> granted = {};
  /// Names that misspelt ones were meant to be. They are told already.
  std::vector<std::string> meant = {};
};

/// Looks at the names and elements of a descriptor that is well-formed.
Grants checkGrants(const std::filesystem::path& folder, std::vector<FolderTrouble>& findings);

}  // namespace morvik::devkit
