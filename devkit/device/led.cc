// The LED: light at once, fade and pulse with an event when they are over.
#include <algorithm>
#include <chrono>
#include <cstdint>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

// However long an effect is asked to take, its end is told within this time.
constexpr milliseconds kLongestEffect = std::chrono::minutes(1);

// Periods and counts below zero come from scripts that passed a negative number; they count as
// none.
std::int64_t atLeastZero(std::int32_t number) { return std::max(number, 0); }

void show(const Exchange& exchange, const std::string& color, Led::Effect effect) {
  exchange.state().led = {color, effect};
  exchange.respond(zeph::OK);
}

void showFor(const Exchange& exchange, const std::string& color, Led::Effect effect,
             milliseconds duration) {
  show(exchange, color, effect);
  exchange.eventAfter(std::min(duration, kLongestEffect), zeph::TERMINATED);
}

}  // namespace

void answerLed(const Exchange& exchange) {
  const zeph::Led& led = exchange.request().led();
  if (led.has_pulse()) {
    const auto& pulse = led.pulse();
    showFor(exchange, pulse.color(), Led::Effect::kPulse,
            milliseconds(atLeastZero(pulse.period()) * atLeastZero(pulse.pulse())));
  } else if (led.has_fade()) {
    showFor(exchange, led.fade().color(), Led::Effect::kFade,
            milliseconds(atLeastZero(led.fade().period())));
  } else if (led.has_light() && led.light().has_color()) {
    show(exchange, led.light().color(), Led::Effect::kLight);
  } else {
    exchange.respond(zeph::ERROR, "the LED needs a colour to light, fade or pulse");
  }
}

}  // namespace morvik::devkit
