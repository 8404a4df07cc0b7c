// The words of features, and those of answers, which are nobody's own.
#include "device/describe.h"

#include "device/features/features.h"
#include "device/payload.h"
#include "device/secrets.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
using zeph::ZephMsg;

const Words* wordsOf(int field) {
  for (const Feature* feature : features()) {
    for (const Words& words : feature->words) {
      if (words.field == field) return &words;
    }
  }
  return nullptr;
}

// An answer may carry a code and something of a feature's; that follows behind a comma.
std::string response(const ZephMsg& message) {
  const auto& response = message.response();
  const int box = ZephMsg::kMorvikMessageResponseFieldNumber;
  const Words* more = message.has_morvikmessageresponse() ? wordsOf(box) : nullptr;
  return "response " + (response.has_code() ? zeph::VReturnCode_Name(response.code()) : "") +
         quotedIfAny(response.description()) + (more != nullptr ? ", " + more->of(message) : "");
}

std::string event(const ZephMsg& message) {
  const auto& event = message.event();
  return "event " + zeph::VReturnCode_Name(event.code()) + quotedIfAny(event.description());
}

// The payload alone: the envelope's ids would drown it.
std::string fieldByField(const ZephMsg& message) {
  ZephMsg payload = withoutSecrets(message);
  payload.clear_id();
  payload.clear_correlationid();
  payload.clear_interactiveid();
  const std::string text = payload.ShortDebugString();
  return text.empty() ? "a message that asks for nothing" : printable(text);
}

std::string inWords(const ZephMsg& message) {
  const auto* payload = payloadOf(message);
  const int field = payload != nullptr ? payload->number() : 0;
  if (field == ZephMsg::kResponseFieldNumber) return response(message);
  if (field == ZephMsg::kEventFieldNumber) return event(message);
  const Words* words = wordsOf(field);
  return words != nullptr ? words->of(message) : fieldByField(message);
}

}  // namespace

std::string describe(const ZephMsg& message) { return cutShort(inWords(message)); }

}  // namespace morvik::devkit
