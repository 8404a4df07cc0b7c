// The colours that the device is sure of.
#pragma once

#include <string>

namespace morvik::devkit {

/// Whether a text is a colour to everybody: a name that browsers know, in letters of either case,
/// or #rgb or #rrggbb.
bool isKnownColor(const std::string& text);

}  // namespace morvik::devkit
