// The script functions of an LED: light, fade, pulse. The device has one and its dock another; they
// differ in where the request lies in the message, and in the feature's label.
#pragma once

#include <zeph-message.pb.h>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// One LED, as a constant of its feature's file.
struct LedPlace {
  const char* label;  ///< the feature's, in the log lines of its answers
  zeph::Led& (*in)(zeph::ZephMsg& message);
};

void lightLed(const Args& args, const LedPlace& led);  ///< light(color, [callback])
void fadeLed(const Args& args, const LedPlace& led);   ///< fade(color, period, [callback])
void pulseLed(const Args& args, const LedPlace& led);  ///< pulse(color, period, pulse, [callback])

}  // namespace morvik
