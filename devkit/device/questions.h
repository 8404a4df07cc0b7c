// What whoever types may ask the device, beside doing something to it.
#pragma once

#include <span>

#include "device/stimulus.h"

namespace morvik::devkit {

/// Rows like those of the stimuli. They change nothing, and no event tells of them.
std::span<const Stimulus> questions();

}  // namespace morvik::devkit
