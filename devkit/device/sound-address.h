// What can be told of an address to play without playing it.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "device/doubt.h"
#include "device/state.h"

namespace morvik::devkit {

/// Where the folders of applications are on this machine, by the names under which they are
/// launched. Empty where nobody knows.
using AppFolders = std::map<std::string, std::filesystem::path>;

/// Why a device would find nothing there to play; nothing when there is no reason to think so. A
/// file is looked for; an address on the web is judged by its form alone, and nobody is asked.
std::optional<Doubt> doubtOfSound(const std::string& url, const Library& library,
                                  const AppFolders& folders);

}  // namespace morvik::devkit
