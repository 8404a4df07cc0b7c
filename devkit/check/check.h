// The check of an application's folder before it is run: what the host would stumble over or pass
// over in silence, each with its place and a cure. Nothing of the application is run.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "run/folder.h"

namespace morvik::devkit {

/// What checkFolder finds, and everything that can be told from the names, the bytes and the sense
/// of descriptor.xml, config.bin, main.js and the scripts that it includes. In the order of files
/// and lines. Is itself a FolderCheck.
std::vector<FolderTrouble> checkApplication(const std::filesystem::path& folder);

/// A finding as a line "file:line:col: message [kind]" and a second one with the cure. The file is
/// told below the folder, as the author named it.
std::string asText(const std::filesystem::path& folder, const FolderTrouble& finding);

/// Findings of a folder as a JSON object, without a line end.
std::string asJson(const std::filesystem::path& folder, const std::vector<FolderTrouble>& findings);

}  // namespace morvik::devkit
