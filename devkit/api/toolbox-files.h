// Files that morvik-dev carries inside itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvik::devkit {

/// The content of a file, by its path in the source tree, such as "api/script-api.json". The file
/// must be there.
std::string_view toolboxFile(const std::string& path);

/// The names of what a folder holds, in alphabetical order; those of folders end with a slash.
/// Empty when there is no such folder.
std::vector<std::string> toolboxFolder(const std::string& path);

}  // namespace morvik::devkit
