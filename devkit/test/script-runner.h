// The process that a test's script runs in. It knows nothing of devices: what the script asks for
// goes as a line of JSON to the runner, and the answer comes as one.
#pragma once

#include <string>

namespace morvik::devkit {

/// Loads the script, tells which tests it has, runs the one that the other end asks for, and tells
/// how that went; `channel` is a stream socket for both directions. Gives the exit status, once the
/// other end has closed its side.
int runTestScript(const std::string& file, int channel);

}  // namespace morvik::devkit
