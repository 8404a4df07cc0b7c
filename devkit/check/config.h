// What config.bin holds, against what a configuration is.
#pragma once

#include <filesystem>
#include <vector>

#include "run/folder.h"

namespace morvik::devkit {

/// Looks at a configuration that can be parsed: required fields that are missing, and fields that
/// no configuration has or that are of another kind.
void checkConfig(const std::filesystem::path& folder, std::vector<FolderTrouble>& findings);

}  // namespace morvik::devkit
