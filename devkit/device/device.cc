// Who uses the device, and which handler answers which payload.
#include "device/device.h"

#include <algorithm>
#include <iterator>

#include "device/exchange.h"
#include "device/handlers.h"
#include "device/payload.h"

namespace morvik::devkit {
namespace {

enum class Needs { kNothing, kGrant };

struct Handler {
  int field;
  Needs needs;
  void (*answer)(const Exchange& exchange);
};

// Everything that the device understands. A payload that is not listed is answered with ERROR.
constexpr Handler kHandlers[] = {
    {zeph::ZephMsg::kInteractiveModeFieldNumber, Needs::kNothing, answerInteractiveMode},
    {zeph::ZephMsg::kPingFieldNumber, Needs::kGrant, answerPing},
    {zeph::ZephMsg::kMorvikinfoQueryFieldNumber, Needs::kGrant, answerInfoQuery},
    {zeph::ZephMsg::kLedFieldNumber, Needs::kGrant, answerLed},
};

const Handler* handlerOf(int field) {
  const auto* found = std::find_if(std::begin(kHandlers), std::end(kHandlers),
                                   [field](const Handler& h) { return h.field == field; });
  return found != std::end(kHandlers) ? found : nullptr;
}

void answer(const Exchange& exchange) {
  const auto* payload = payloadOf(exchange.request());
  if (payload == nullptr) {
    exchange.respond(zeph::ERROR, "the message asks for nothing");
    return;
  }
  const Handler* handler = handlerOf(payload->number());
  if (handler == nullptr) {
    exchange.respond(zeph::ERROR, "this device has no answer to " + payload->name());
  } else if (handler->needs == Needs::kGrant && !exchange.carriesGrant()) {
    exchange.respond(zeph::BAD_INTERACTIVEID, "not the interactive id that was granted");
  } else {
    handler->answer(exchange);
  }
}

}  // namespace

void Device::applicationCame(AppNumber number) { applications_[number].number = number; }

void Device::applicationLeft(AppNumber number) { applications_.erase(number); }

void Device::receive(AppNumber from, const zeph::ZephMsg& request) {
  const auto found = applications_.find(from);
  if (found != applications_.end()) answer(Exchange(*this, found->second, request));
}

const Application* Device::application(AppNumber number) const {
  const auto found = applications_.find(number);
  return found != applications_.end() ? &found->second : nullptr;
}

}  // namespace morvik::devkit
