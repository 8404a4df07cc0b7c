// The ears: they turn step by step, tell everybody when they start and stop, and may be turned or
// held by hand.
#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kTimeOfAStep{100};

int withinReach(std::int64_t step) {
  return static_cast<int>(std::clamp<std::int64_t>(step, 0, kMostEarSteps));
}

zeph::ZephMsg earMessage(zeph::EarsCallback::Type type, int step, int length) {
  zeph::ZephMsg message;
  auto* ears = message.mutable_earscallback();
  ears->set_type(type);
  ears->set_step(step);
  ears->set_length(length);
  return message;
}

// An ear that stays where it is says nothing.
void tellStart(Device& device, const Ears& from, const Ears& to) {
  using Type = zeph::EarsCallback;
  if (from.left != to.left) {
    device.sendToAll(earMessage(Type::START_LEFT, from.left, std::abs(to.left - from.left)));
  }
  if (from.right != to.right) {
    device.sendToAll(earMessage(Type::START_RIGHT, from.right, std::abs(to.right - from.right)));
  }
}

void tellStop(Device& device, const Ears& from, const Ears& to) {
  using Type = zeph::EarsCallback;
  if (from.left != to.left) {
    device.sendToAll(earMessage(Type::STOP_LEFT, to.left, std::abs(to.left - from.left)));
  }
  if (from.right != to.right) {
    device.sendToAll(earMessage(Type::STOP_RIGHT, to.right, std::abs(to.right - from.right)));
  }
}

void addPositions(zeph::ZephMsg& message, const Ears& ears) {
  message.mutable_ears()->set_left(ears.left);
  message.mutable_ears()->set_right(ears.right);
}

Ears wantedBy(const zeph::Ears& command, const Ears& now) {
  Ears wanted = now;
  if (command.reset()) {
    if (command.has_left()) wanted.left = 0;
    if (command.has_right()) wanted.right = 0;
    return wanted;
  }
  const std::int64_t left = command.relative() ? now.left : 0;
  const std::int64_t right = command.relative() ? now.right : 0;
  if (command.has_left()) wanted.left = withinReach(left + command.left());
  if (command.has_right()) wanted.right = withinReach(right + command.right());
  return wanted;
}

// Ears that are stopped on their way have made half of it.
void arrive(Device& device, const Ears& from, const Ears& to, bool reset, zeph::ZephMsg& event) {
  const bool whole = event.event().code() == zeph::TERMINATED;
  const Ears now = whole ? to : Ears{(from.left + to.left) / 2, (from.right + to.right) / 2};
  device.state().ears = now;
  tellStop(device, from, now);
  if (reset) addPositions(event, now);
}

}  // namespace

// Half a way, told as such, would come before a new one: so the running command ends first.
void answerEars(const Exchange& exchange) {
  Device& device = exchange.device();
  device.end(Work::kEars, zeph::CANCELLED);
  const zeph::Ears& command = exchange.request().ears();
  const bool reset = command.reset();
  const Ears from = device.state().ears;
  const Ears to = wantedBy(command, from);
  zeph::ZephMsg answer;
  answer.mutable_response()->set_code(zeph::OK);
  if (reset) addPositions(answer, to);
  exchange.reply(answer);
  tellStart(device, from, to);
  const int steps = std::max(std::abs(to.left - from.left), std::abs(to.right - from.right));
  exchange.undertake(
      Work::kEars, steps * kTimeOfAStep,
      [&device, from, to, reset](zeph::ZephMsg& event) { arrive(device, from, to, reset, event); });
}

void turnEar(Stimulation& stimulation) {
  const bool left = stimulation.oneOf({"LEFT", "RIGHT"}) == 0;
  const int step = stimulation.number("the step", 0, kMostEarSteps);
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  Device& device = stimulation.device();
  device.note(std::string("the ") + (left ? "left" : "right") + " ear is turned to " +
              std::to_string(step));
  device.end(Work::kEars, zeph::CANCELLED);
  const Ears from = device.state().ears;
  (left ? device.state().ears.left : device.state().ears.right) = step;
  tellStart(device, from, device.state().ears);
  tellStop(device, from, device.state().ears);
}

void tellOfEars(Stimulation& stimulation) {
  zeph::ZephMsg message;
  auto* ears = message.mutable_earscallback();
  ears->set_type(stimulation.choice<zeph::EarsCallback::Type>("what happened"));
  if (stimulation.hasMore()) ears->set_step(stimulation.number("STEP"));
  if (stimulation.hasMore()) {
    ears->set_length(stimulation.number("LENGTH"));
  }
  if (!stimulation.understood()) return;
  stimulation.send(message);
  if (ears->type() == zeph::EarsCallback::BLOCKED_LEFT ||
      ears->type() == zeph::EarsCallback::BLOCKED_RIGHT) {
    stimulation.device().end(Work::kEars, zeph::CANCELLED);
  }
}

}  // namespace morvik::devkit
