// Who uses the device, which handler answers which payload, and what is being done.
#include "device/device.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "device/exchange.h"
#include "device/handlers.h"
#include "device/owned.h"
#include "device/payload.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

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
    {zeph::ZephMsg::kEarsFieldNumber, Needs::kGrant, answerEars},
    {zeph::ZephMsg::kDockFieldNumber, Needs::kGrant, answerDock},
    {zeph::ZephMsg::kTtsFieldNumber, Needs::kGrant, answerTts},
    {zeph::ZephMsg::kAsrFieldNumber, Needs::kGrant, answerAsr},
    {zeph::ZephMsg::kMultimediaFieldNumber, Needs::kGrant, answerMultimedia},
    {zeph::ZephMsg::kWebcamFieldNumber, Needs::kGrant, answerWebcam},
    {zeph::ZephMsg::kM2MFieldNumber, Needs::kGrant, answerM2m},
    {zeph::ZephMsg::kSerialFieldNumber, Needs::kGrant, answerSerial},
    // An application may listen to a port before it has interactive mode.
    {zeph::ZephMsg::kSerialCallbackFieldNumber, Needs::kNothing, answerSerialListener},
    {zeph::ZephMsg::kGetcontactListFieldNumber, Needs::kGrant, answerContactQuery},
    {zeph::ZephMsg::kMorvikMessageQueryFieldNumber, Needs::kGrant, answerMessageQuery},
    {zeph::ZephMsg::kSocialQueryFieldNumber, Needs::kNothing, answerSocialQuery},
};

const Handler* handlerOf(int field) {
  const auto* found = std::find_if(std::begin(kHandlers), std::end(kHandlers),
                                   [field](const Handler& h) { return h.field == field; });
  return found != std::end(kHandlers) ? found : nullptr;
}

void answerByTable(const Exchange& exchange) {
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

int payloadNumber(const zeph::ZephMsg& message) {
  const auto* payload = payloadOf(message);
  return payload != nullptr ? payload->number() : 0;
}

}  // namespace

std::vector<const google::protobuf::FieldDescriptor*> Device::commands() {
  std::vector<const google::protobuf::FieldDescriptor*> commands;
  for (const Handler& handler : kHandlers) {
    commands.push_back(zeph::ZephMsg::descriptor()->FindFieldByNumber(handler.field));
  }
  return commands;
}

void Device::applicationCame(AppNumber number) { applications_[number].number = number; }

void Device::applicationLeft(AppNumber number) {
  endCall(*this, number);
  applications_.erase(number);
}

const Application* Device::application(AppNumber number) const {
  const auto found = applications_.find(number);
  return found != applications_.end() ? &found->second : nullptr;
}

Application* Device::application(AppNumber number) {
  const auto found = applications_.find(number);
  return found != applications_.end() ? &found->second : nullptr;
}

void Device::receive(AppNumber from, const zeph::ZephMsg& request) {
  const milliseconds delay = delayOf(payloadNumber(request));
  if (delay > milliseconds(0)) {
    after(delay, [this, from, request] { answer(from, request); });
  } else {
    answer(from, request);
  }
}

void Device::answer(AppNumber from, const zeph::ZephMsg& request) {
  Application* found = application(from);
  if (found == nullptr) return;
  const Exchange exchange(*this, *found, request);
  if (const auto code = refusalOf(from, payloadNumber(request))) {
    exchange.respond(*code, "as the command input wants it");
  } else {
    answerByTable(exchange);
  }
}

std::optional<zeph::VReturnCode> Device::refusalOf(AppNumber from, int field) {
  std::vector<Refusal>& refusals = state_.refusals;
  const auto found = std::find_if(refusals.begin(), refusals.end(), [&](const Refusal& refusal) {
    return (refusal.field == 0 || refusal.field == field) && refusal.only.value_or(from) == from;
  });
  if (found == refusals.end()) return std::nullopt;
  const zeph::VReturnCode code = found->code;
  if (found->left != Refusal::kAlways && --found->left == 0) refusals.erase(found);
  return code;
}

milliseconds Device::delayOf(int field) const {
  auto found = state_.delays.find(field);
  if (found == state_.delays.end()) found = state_.delays.find(0);
  return found != state_.delays.end() ? found->second : milliseconds(0);
}

void Device::send(AppNumber to, zeph::ZephMsg message) {
  message.set_id(GText(g_uuid_string_random()).get());
  Application* found = application(to);
  const Delivery delivery = found != nullptr ? std::exchange(found->delivery, {}) : Delivery{};
  outlet_.send(to, message, delivery);
}

void Device::sendToAll(const zeph::ZephMsg& message) {
  for (const auto& [number, application] : applications_) send(number, message);
}

void Device::begin(Work work, Order order, milliseconds length) {
  end(work, zeph::CANCELLED);
  place(work).order = std::move(order);
  prolong(work, length);
}

void Device::prolong(Work work, milliseconds length) {
  const unsigned turn = ++place(work).turn;
  after(std::min(length, kLongestWork), [this, work, turn] {
    if (place(work).turn == turn) end(work, zeph::TERMINATED);
  });
}

bool Device::end(Work work, zeph::VReturnCode code, const std::string& description) {
  const std::optional<Order> order = take(work);
  if (!order) return false;
  zeph::ZephMsg event;
  event.set_correlationid(order->request);
  event.mutable_event()->set_code(code);
  if (!description.empty()) event.mutable_event()->set_description(description);
  if (order->atEnd) order->atEnd(event);
  send(order->application, std::move(event));
  return true;
}

std::optional<AppNumber> Device::whoseWork(Work work) const {
  const std::optional<Order>& order = places_[static_cast<std::size_t>(work)].order;
  return order ? std::optional(order->application) : std::nullopt;
}

std::optional<Order> Device::take(Work work) {
  ++place(work).turn;
  return std::exchange(place(work).order, std::nullopt);
}

}  // namespace morvik::devkit
