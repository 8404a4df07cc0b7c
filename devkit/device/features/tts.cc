// The voice.
#include <algorithm>
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/owned.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kTimeOfALetter{60};
constexpr milliseconds kShortestSpeech{500};
constexpr milliseconds kLongestSpeech{10000};

milliseconds timeToSay(const std::string& text) {
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  return std::clamp(kTimeOfALetter * g_utf8_strlen(valid.get(), -1), kShortestSpeech,
                    kLongestSpeech);
}

void answer(const Exchange& exchange) {
  const zeph::Tts& tts = exchange.request().tts();
  if (tts.action() == zeph::Tts::STOP) {
    exchange.device().end(Work::kTts, zeph::CANCELLED);
    exchange.respond(zeph::OK);
  } else if (tts.text().empty()) {
    exchange.respond(zeph::ERROR, "there is no text to speak");
  } else {
    exchange.device().change("speech", [&](DeviceState& state) {
      state.speech = {tts.text(), tts.lang()};
    });
    exchange.undertake(Work::kTts, timeToSay(tts.text()));
    exchange.respond(zeph::OK);
  }
}

std::string atAGlance(const DeviceView& view) {
  return underwayIn(view, Work::kTts) != nullptr ? "says" + quotedIfAny(view.state.speech.text)
                                                 : "";
}

void show(const DeviceView& view, JsonObject& whole) {
  const Speech& speech = view.state.speech;
  whole.object("speech").text("text", speech.text).text("lang", speech.lang);
}

constexpr Command kCommands[] = {{zeph::ZephMsg::kTtsFieldNumber, Command::Needs::kGrant, answer}};
constexpr Glance kGlances[] = {{"speech", atAGlance}};

}  // namespace

constinit const Feature kTtsFeature = {.commands = kCommands, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
