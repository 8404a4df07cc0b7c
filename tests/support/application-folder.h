// Folders of applications that a test writes itself.
#pragma once

#include <filesystem>
#include <string>

namespace morvik::test {

/// Makes an application in this folder, or another main.js for one that is there. Written in place.
void writeApplication(const std::filesystem::path& folder, const std::string& script,
                      const std::string& accesses);

/// A main.js that connects, is granted interactive mode, and then does this.
std::string interactiveScript(const std::string& onGrant);

}  // namespace morvik::test
