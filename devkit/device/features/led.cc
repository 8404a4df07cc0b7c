// The LED, and that of the dock: light at once, fade and pulse with an event when they are over.
#include <algorithm>
#include <chrono>
#include <cstdint>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

// Periods and counts below zero come from scripts that passed a negative number; they count as
// none.
std::int64_t atLeastZero(std::int32_t number) { return std::max(number, 0); }

void showFor(const Exchange& exchange, Work work, milliseconds duration) {
  exchange.undertake(work, duration);
  exchange.respond(zeph::OK);
}

}  // namespace

void answerLedCommand(const Exchange& exchange, const zeph::Led& led, Led& state, Work work) {
  if (led.has_pulse()) {
    const auto& pulse = led.pulse();
    state = {pulse.color(), Led::Effect::kPulse};
    showFor(exchange, work, milliseconds(atLeastZero(pulse.period()) * atLeastZero(pulse.pulse())));
  } else if (led.has_fade()) {
    state = {led.fade().color(), Led::Effect::kFade};
    showFor(exchange, work, milliseconds(atLeastZero(led.fade().period())));
  } else if (led.has_light() && led.light().has_color()) {
    state = {led.light().color(), Led::Effect::kLight};
    exchange.device().end(work, zeph::CANCELLED);
    exchange.respond(zeph::OK);
  } else {
    exchange.respond(zeph::ERROR, "the LED needs a colour to light, fade or pulse");
  }
}

void answerLed(const Exchange& exchange) {
  answerLedCommand(exchange, exchange.request().led(), exchange.state().led, Work::kLed);
}

}  // namespace morvik::devkit
