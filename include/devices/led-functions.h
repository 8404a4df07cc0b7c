// The script functions of an LED: light, fade, pulse. The device has one and its dock another; they
// differ in where the request lies in the message, and in the feature's label.
#pragma once

#include <glib.h>
#include <zeph-message.pb.h>

#include <cstdint>
#include <string>

#include "channel/request.h"

namespace morvik {

/// One LED, as a constant of its feature's file.
struct LedPlace {
  const char* label;
  zeph::Led& (*in)(zeph::ZephMsg& message);
};

/// light(color, [callback])
template <const LedPlace& led>
void lightLed(const Args& args) {
  Request request(args, led.label, 1);
  const std::string color = request.ascii(0);
  if (request.refused()) return;
  g_debug("LED Light: color[%s]", color.c_str());
  led.in(request.message()).mutable_light()->set_color(color);
  request.send();
}

/// fade(color, period, [callback])
template <const LedPlace& led>
void fadeLed(const Args& args) {
  Request request(args, led.label, 2);
  const std::string color = request.ascii(0);
  const auto period = static_cast<std::int32_t>(request.uint32(1));  // the 32 bits as they are
  if (request.refused()) return;
  g_debug("LED Fade: color[%s] period[%d]", color.c_str(), period);
  auto& message = *led.in(request.message()).mutable_fade();
  message.set_color(color);
  message.set_period(period);
  request.send();
}

/// pulse(color, period, pulse, [callback])
template <const LedPlace& led>
void pulseLed(const Args& args) {
  Request request(args, led.label, 3);
  const std::string color = request.ascii(0);
  const auto period = static_cast<std::int32_t>(request.uint32(1));
  const auto count = static_cast<std::int32_t>(request.uint32(2));
  if (request.refused()) return;
  g_debug("LED Pulse: color[%s] period[%d] pulse[%d]", color.c_str(), period, count);
  auto& message = *led.in(request.message()).mutable_pulse();
  message.set_color(color);
  message.set_period(period);
  message.set_pulse(count);
  request.send();
}

}  // namespace morvik
