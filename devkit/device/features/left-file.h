// What commands have in common that leave a file behind.
#pragma once

#include <optional>
#include <string>

#include "device/device.h"

namespace morvik::devkit {

/// At the end of such a command, whose event is about to be sent: writes the file, unless the
/// command was cut short, and notes it, or tells in the event why it cannot.
void leaveFile(Device& device, zeph::ZephMsg& event, const char* path,
               std::optional<std::string> (*write)());

}  // namespace morvik::devkit
