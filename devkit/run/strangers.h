// Programs that are started for a person, and are that person's afterwards.
#pragma once

#include <string>

namespace morvik::devkit {

/// Opens an address in the user's browser, which is not ended with this process. The reason when
/// there is no program for that; empty when there is.
std::string openInBrowser(const std::string& address);

}  // namespace morvik::devkit
