// The check of an application's scripts.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "check/descriptor.h"
#include "run/folder.h"

namespace morvik::devkit {

/// Compiles main.js and what it includes, and looks at what they call. `app` is the folder's own
/// name. Grants that no script uses are told too.
void checkScripts(const std::filesystem::path& folder, const std::string& app, const Grants& grants,
                  std::vector<FolderTrouble>& findings);

}  // namespace morvik::devkit
