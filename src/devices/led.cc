// morvik.led: light, fade, pulse. The server drives the LED; nothing is remembered here.
#include <glib.h>

#include "channel/request.h"
#include "devices/devices.h"

namespace morvik {
namespace {

constexpr const char* kLabel = "LED";

void pulse(const Args& args) {
  Request request(args, kLabel, 3);
  const std::string color = request.ascii(0);
  const auto period = static_cast<std::int32_t>(request.uint32(1));  // the 32 bits as they are
  const auto count = static_cast<std::int32_t>(request.uint32(2));
  if (request.refused()) return;
  g_debug("LED Pulse: color[%s] period[%d] pulse[%d]", color.c_str(), period, count);
  auto& message = *request.message().mutable_led()->mutable_pulse();
  message.set_color(color);
  message.set_period(period);
  message.set_pulse(count);
  request.send();
}

void fade(const Args& args) {
  Request request(args, kLabel, 2);
  const std::string color = request.ascii(0);
  const auto period = static_cast<std::int32_t>(request.uint32(1));
  if (request.refused()) return;
  g_debug("LED Fade: color[%s] period[%d]", color.c_str(), period);
  auto& message = *request.message().mutable_led()->mutable_fade();
  message.set_color(color);
  message.set_period(period);
  request.send();
}

void light(const Args& args) {
  Request request(args, kLabel, 1);
  const std::string color = request.ascii(0);
  if (request.refused()) return;
  g_debug("LED Light: color[%s]", color.c_str());
  request.message().mutable_led()->mutable_light()->set_color(color);
  request.send();
}

constexpr Binding kFunctions[] = {{"light", light}, {"fade", fade}, {"pulse", pulse}};

}  // namespace

std::span<const Binding> ledFunctions() { return kFunctions; }

}  // namespace morvik
