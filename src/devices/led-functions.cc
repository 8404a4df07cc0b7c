// What the functions of every LED have in common.
#include "devices/led-functions.h"

#include <glib.h>

#include <cstdint>
#include <string>

#include "channel/request.h"

namespace morvik {
namespace {

// A time or a number of times. The wire's field is signed and takes the 32 bits as they are: from
// 2147483648 on, the server gets a negative number.
std::int32_t count(Request& request, int index) {
  return static_cast<std::int32_t>(request.uint32(index));
}

}  // namespace

void lightLed(const Args& args, const LedPlace& led) {
  Request request(args, led.label, 1);
  const std::string color = request.ascii(0);
  if (request.refused()) return;
  g_debug("LED Light: color[%s]", color.c_str());
  led.in(request.message()).mutable_light()->set_color(color);
  request.send();
}

void fadeLed(const Args& args, const LedPlace& led) {
  Request request(args, led.label, 2);
  const std::string color = request.ascii(0);
  const std::int32_t period = count(request, 1);
  if (request.refused()) return;
  g_debug("LED Fade: color[%s] period[%d]", color.c_str(), period);
  auto& message = *led.in(request.message()).mutable_fade();
  message.set_color(color);
  message.set_period(period);
  request.send();
}

void pulseLed(const Args& args, const LedPlace& led) {
  Request request(args, led.label, 3);
  const std::string color = request.ascii(0);
  const std::int32_t period = count(request, 1);
  const std::int32_t pulse = count(request, 2);
  if (request.refused()) return;
  g_debug("LED Pulse: color[%s] period[%d] pulse[%d]", color.c_str(), period, pulse);
  auto& message = *led.in(request.message()).mutable_pulse();
  message.set_color(color);
  message.set_period(period);
  message.set_pulse(pulse);
  request.send();
}

}  // namespace morvik
