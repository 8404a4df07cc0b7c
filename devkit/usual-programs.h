// Where the programs are that the verbs start.
#pragma once

#include <string>

namespace morvik::devkit {

/// This program itself.
std::string ownProgram();
/// The host of that name that was built with this program, or the one that is installed.
std::string usualHost(const char* name = "morvikvm");
/// A file that lies beside this program.
std::string besideProgram(const std::string& name);

}  // namespace morvik::devkit
