// morvik.led: light, fade, pulse. The server drives the LED; nothing is remembered here.
#include "devices/devices.h"
#include "devices/led-functions.h"

namespace morvik {
namespace {

constexpr LedPlace kLed{
    "LED", [](zeph::ZephMsg& message) -> zeph::Led& { return *message.mutable_led(); }};

constexpr Binding kFunctions[] = {
    {"light", lightLed<kLed>}, {"fade", fadeLed<kLed>}, {"pulse", pulseLed<kLed>}};

}  // namespace

std::span<const Binding> ledFunctions() { return kFunctions; }

}  // namespace morvik
