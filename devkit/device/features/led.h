// What the device has of every LED, its own and the dock's.
#pragma once

#include "device/exchange.h"
#include "device/json.h"
#include "device/view.h"

namespace morvik::devkit {

/// Answers a command to an LED. `part` is its part of the view, `place` its place in the state.
void answerLedCommand(const Exchange& exchange, const zeph::Led& command, Work work,
                      const char* part, Led& (*place)(DeviceState& state));

/// The command in words, such as "led fade blue 500 ms".
std::string ledInWords(const zeph::Led& command);

/// How it stands, such as "blue, fades for 300 ms more".
std::string ledAtAGlance(const DeviceView& view, const Led& led, Work work);

void showLed(const Led& led, JsonObject shown);

}  // namespace morvik::devkit
