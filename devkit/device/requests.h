// What a program says to the device, a line of text each, and what it is answered: the words of the
// command input, or JSON. docs/device-json.md describes both.
#pragma once

#include <string>
#include <string_view>

#include "device/device.h"

namespace morvik::devkit {

/// The first words to such a program: where the device listens, and the version of all that
/// follows.
std::string greeting(const Device& device, const char* host, int port);

/// Does what the line says; every line is answered with one object on a line, whose "event"
/// tells its kind.
std::string answerTo(Device& device, std::string_view line);

}  // namespace morvik::devkit
