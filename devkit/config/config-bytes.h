// config.bin as the host reads it: a serialised ConfigApp.
#pragma once

#include <string>

#include "config/config-text.h"

namespace morvik::devkit {

/// Reads bytes. A finding of damage tells the byte, counted from 0, and the field; required fields
/// that are missing and fields that no configuration has are findings as well.
ConfigRead readConfigBytes(const std::string& file, const std::string& bytes);

}  // namespace morvik::devkit
