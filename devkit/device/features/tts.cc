// The voice.
#include <algorithm>
#include <chrono>

#include "device/handlers.h"
#include "device/owned.h"

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

}  // namespace

void answerTts(const Exchange& exchange) {
  const zeph::Tts& tts = exchange.request().tts();
  if (tts.action() == zeph::Tts::STOP) {
    exchange.device().end(Work::kTts, zeph::CANCELLED);
    exchange.respond(zeph::OK);
  } else if (tts.text().empty()) {
    exchange.respond(zeph::ERROR, "there is no text to speak");
  } else {
    exchange.state().speech = {tts.text(), tts.lang()};
    exchange.undertake(Work::kTts, timeToSay(tts.text()));
    exchange.respond(zeph::OK);
  }
}

}  // namespace morvik::devkit
