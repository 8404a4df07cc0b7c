// Where the tool keeps what outlives it, unless its user names another folder.
#pragma once

#include <string>

namespace morvik::devkit {

/// $XDG_STATE_HOME/morvik-dev, or what stands for it. It need not be there yet.
std::string usualStateFolder();

}  // namespace morvik::devkit
