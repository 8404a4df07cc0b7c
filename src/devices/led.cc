// morvik.led: light, fade, pulse. The server drives the LED; nothing is remembered here.
#include "devices/devices.h"
#include "devices/led-functions.h"

namespace morvik {
namespace {

constexpr LedPlace kLed{
    "LED", [](zeph::ZephMsg& message) -> zeph::Led& { return *message.mutable_led(); }};

void light(const Args& args) { lightLed(args, kLed); }

void fade(const Args& args) { fadeLed(args, kLed); }

void pulse(const Args& args) { pulseLed(args, kLed); }

constexpr Binding kFunctions[] = {{"light", light}, {"fade", fade}, {"pulse", pulse}};

}  // namespace

std::span<const Binding> ledFunctions() { return kFunctions; }

}  // namespace morvik
