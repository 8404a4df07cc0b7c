// The LED, and that of the dock: light at once, fade and pulse with an event when they are over.
#include "device/features/led.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "device/colors.h"
#include "device/features/features.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

// Periods and counts below zero come from scripts that passed a negative number; they count as
// none.
int atLeastZero(std::int32_t number) { return std::max(number, 0); }

// What the LED does next; nothing when the command does not say.
std::optional<Led> wantedBy(const zeph::Led& command) {
  if (command.has_pulse()) {
    const auto& pulse = command.pulse();
    return Led{pulse.color(), "pulse", "", milliseconds(atLeastZero(pulse.period())),
               atLeastZero(pulse.pulse())};
  }
  if (command.has_fade()) {
    const auto& fade = command.fade();
    return Led{fade.color(), "fade", "", milliseconds(atLeastZero(fade.period())), 1};
  }
  if (command.has_light() && command.light().has_color()) {
    return Led{command.light().color(), "light", "", {}, 0};
  }
  return std::nullopt;
}

std::string changeInWords(const Led& led) {
  const std::string period = inMilliseconds(static_cast<int>(led.period.count()));
  return led.effect == "fade" ? "a fade of " + period
                              : std::to_string(led.count) + " pulses of " + period;
}

// In the place of a change that takes no time stands a light.
void doubtLed(const Exchange& exchange, const Led& wanted) {
  if (!isKnownColor(wanted.color)) {
    exchange.doubt(Doubt::About::kColor, wanted.color,
                   "the LED may not know the colour " + cited(wanted.color) +
                       ": write a name such as red, or #rrggbb");
  }
  if (wanted.effect == "light" || wanted.period * std::int64_t{wanted.count} > milliseconds(0)) {
    return;
  }
  const std::string change = changeInWords(wanted);
  exchange.doubt(Doubt::About::kFade, change,
                 "nothing is to be seen of " + change +
                     ", and a device may refuse it: give it some time, or use light");
}

}  // namespace

// A light is done at once; everything else takes its periods.
void answerLedCommand(const Exchange& exchange, const zeph::Led& command, Work work,
                      const char* part, Led& (*place)(DeviceState& state)) {
  std::optional<Led> wanted = wantedBy(command);
  if (!wanted) {
    exchange.respond(zeph::ERROR, "the LED needs a colour to light, fade or pulse");
    return;
  }
  doubtLed(exchange, *wanted);
  exchange.device().change(part, [&](DeviceState& state) {
    wanted->from = place(state).color;
    place(state) = *wanted;
  });
  if (wanted->effect == "light") {
    exchange.device().end(work, zeph::CANCELLED);
  } else {
    exchange.undertake(work, wanted->period * std::int64_t{wanted->count});
  }
  exchange.respond(zeph::OK);
}

std::string ledInWords(const zeph::Led& command) {
  if (command.has_pulse()) {
    return "led pulse " + printable(command.pulse().color()) + ' ' +
           inMilliseconds(command.pulse().period()) + " x " +
           std::to_string(command.pulse().pulse());
  }
  if (command.has_fade()) {
    return "led fade " + printable(command.fade().color()) + ' ' +
           inMilliseconds(command.fade().period());
  }
  return "led light " + printable(command.light().color());
}

std::string ledAtAGlance(const DeviceView& view, const Led& led, Work work) {
  if (led.color.empty()) return "not lit yet";
  const Underway* underway = underwayIn(view, work);
  if (underway == nullptr) return led.color;
  return led.color + (led.effect == "fade" ? ", fades for " : ", pulses for ") +
         timeLeftOf(view, *underway);
}

void showLed(const Led& led, JsonObject shown) {
  shown.text("color", led.color).text("effect", led.effect);
  if (led.effect == "light") return;
  shown.text("from", led.from).number("period", led.period.count()).number("count", led.count);
}

namespace {

void answer(const Exchange& exchange) {
  answerLedCommand(exchange, exchange.request().led(), Work::kLed, "led",
                   [](DeviceState& state) -> Led& { return state.led; });
}

std::string ledMessageInWords(const zeph::ZephMsg& message) { return ledInWords(message.led()); }

std::string atAGlance(const DeviceView& view) {
  return ledAtAGlance(view, view.state.led, Work::kLed);
}

void show(const DeviceView& view, JsonObject& whole) {
  showLed(view.state.led, whole.object("led"));
}

constexpr Command kCommands[] = {{zeph::ZephMsg::kLedFieldNumber, Command::Needs::kGrant, answer}};
constexpr Words kWords[] = {{zeph::ZephMsg::kLedFieldNumber, ledMessageInWords}};
constexpr Glance kGlances[] = {{"LED", atAGlance}};

}  // namespace

constinit const Feature kLedFeature = {
    .commands = kCommands, .words = kWords, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
