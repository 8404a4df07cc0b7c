// Which feature answers which payload, and the faults in between.
#include "device/commands.h"

#include <chrono>
#include <utility>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/payload.h"

namespace morvik::devkit {
namespace {

const Command* commandOf(int field) {
  for (const Feature* feature : features()) {
    for (const Command& command : feature->commands) {
      if (command.field == field) return &command;
    }
  }
  return nullptr;
}

int payloadNumber(const zeph::ZephMsg& message) {
  const auto* payload = payloadOf(message);
  return payload != nullptr ? payload->number() : 0;
}

void answerByTable(const Exchange& exchange) {
  const auto* payload = payloadOf(exchange.request());
  if (payload == nullptr) {
    exchange.respond(zeph::ERROR, "the message asks for nothing");
    return;
  }
  const Command* command = commandOf(payload->number());
  if (command == nullptr) {
    exchange.respond(zeph::ERROR, "this device has no answer to " + payload->name());
  } else if (command->needs == Command::Needs::kGrant && !exchange.carriesGrant()) {
    exchange.respond(zeph::BAD_INTERACTIVEID, "not the interactive id that was granted");
  } else {
    command->answer(exchange);
  }
}

std::optional<zeph::VReturnCode> refusalOf(Device& device, AppNumber from, int field) {
  if (device.faults().refusals().empty()) return std::nullopt;
  std::optional<zeph::VReturnCode> code;
  device.changeFaults([&](Faults& faults) { code = faults.refusalOf(from, field); });
  return code;
}

void answer(Device& device, AppNumber from, const zeph::ZephMsg& request) {
  const Application* application = device.application(from);
  if (application == nullptr) return;
  const Exchange exchange(device, *application, request);
  if (const auto code = refusalOf(device, from, payloadNumber(request))) {
    exchange.respond(*code, "as the command input wants it");
  } else {
    answerByTable(exchange);
  }
}

}  // namespace

void receive(Device& device, AppNumber from, zeph::ZephMsg request) {
  const Events::Pause pause(device.events());
  const auto passed = std::make_shared<const zeph::ZephMsg>(std::move(request));
  if (device.application(from) == nullptr) return;
  device.events().raise(Received{from, passed});
  const std::chrono::milliseconds delay = device.faults().delayOf(payloadNumber(*passed));
  if (delay > std::chrono::milliseconds(0)) {
    device.after(delay, [&device, from, passed] { answer(device, from, *passed); });
  } else {
    answer(device, from, *passed);
  }
}

std::vector<const google::protobuf::FieldDescriptor*> commands() {
  std::vector<const google::protobuf::FieldDescriptor*> commands;
  for (const Feature* feature : features()) {
    for (const Command& command : feature->commands) {
      commands.push_back(zeph::ZephMsg::descriptor()->FindFieldByNumber(command.field));
    }
  }
  return commands;
}

}  // namespace morvik::devkit
