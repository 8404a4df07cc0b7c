// The ears: they turn step by step, tell everybody when they start and stop, and may be turned or
// held by hand.
#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using Type = zeph::EarsCallback;

// Where they stand and where they turn to.

int withinReach(std::int64_t step) {
  return static_cast<int>(std::clamp<std::int64_t>(step, 0, kMostEarSteps));
}

// Where a command sends both, within reach or not.
struct EarAims {
  std::int64_t left;
  std::int64_t right;
};

EarAims aimsOf(const zeph::Ears& command, const Ears& now) {
  EarAims aims{now.left, now.right};
  if (command.reset()) {
    if (command.has_left()) aims.left = 0;
    if (command.has_right()) aims.right = 0;
    return aims;
  }
  const EarAims base = command.relative() ? aims : EarAims{0, 0};
  if (command.has_left()) aims.left = base.left + command.left();
  if (command.has_right()) aims.right = base.right + command.right();
  return aims;
}

void doubtAim(const Exchange& exchange, const std::string& side, std::int64_t aim) {
  if (aim == withinReach(aim)) return;
  const std::string most = std::to_string(kMostEarSteps);
  exchange.doubt(Doubt::About::kEar, side + ' ' + std::to_string(aim),
                 "the " + side + " ear is sent to " + std::to_string(aim) +
                     ", and a device may refuse what is not from 0 to " + most +
                     ": stay within that");
}

void turnTowards(Device& device, const Ears& to) {
  device.change("ears", [&](DeviceState& state) { state.earsTowards = to; });
}

void standAt(Device& device, const Ears& at) {
  device.change("ears", [&](DeviceState& state) { state.ears = state.earsTowards = at; });
}

// What is told of it.

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
  if (from.left != to.left) {
    device.sendToAll(earMessage(Type::START_LEFT, from.left, std::abs(to.left - from.left)));
  }
  if (from.right != to.right) {
    device.sendToAll(earMessage(Type::START_RIGHT, from.right, std::abs(to.right - from.right)));
  }
}

void tellStop(Device& device, const Ears& from, const Ears& to) {
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

// Ears that are stopped on their way have made half of it.
void arrive(Device& device, const Ears& from, const Ears& to, bool reset, zeph::ZephMsg& event) {
  const bool whole = event.event().code() == zeph::TERMINATED;
  const Ears now = whole ? to : Ears{(from.left + to.left) / 2, (from.right + to.right) / 2};
  standAt(device, now);
  tellStop(device, from, now);
  if (reset) addPositions(event, now);
}

// Half a way, told as such, would come before a new one: so the running command ends first.
void answer(const Exchange& exchange) {
  Device& device = exchange.device();
  device.end(Work::kEars, zeph::CANCELLED);
  const zeph::Ears& command = exchange.request().ears();
  const bool reset = command.reset();
  const Ears from = device.state().ears;
  const EarAims aims = aimsOf(command, from);
  doubtAim(exchange, "left", aims.left);
  doubtAim(exchange, "right", aims.right);
  const Ears to{withinReach(aims.left), withinReach(aims.right)};
  zeph::ZephMsg answer;
  answer.mutable_response()->set_code(zeph::OK);
  if (reset) addPositions(answer, to);
  exchange.reply(answer);
  turnTowards(device, to);
  tellStart(device, from, to);
  const int steps = std::max(std::abs(to.left - from.left), std::abs(to.right - from.right));
  exchange.undertake(
      Work::kEars, steps * kTimeOfAnEarStep,
      [&device, from, to, reset](zeph::ZephMsg& event) { arrive(device, from, to, reset, event); });
}

// What the world does to them.

void turnByHand(Stimulation& stimulation) {
  const bool left = stimulation.text("side") == "LEFT";
  const int step = stimulation.number("step");
  if (!stimulation.understood()) return;
  Device& device = stimulation.device();
  device.note(std::string("the ") + (left ? "left" : "right") + " ear is turned to " +
              std::to_string(step));
  device.end(Work::kEars, zeph::CANCELLED);
  const Ears from = device.state().ears;
  Ears to = from;
  (left ? to.left : to.right) = step;
  standAt(device, to);
  tellStart(device, from, to);
  tellStop(device, from, to);
}

void tellOfEars(Stimulation& stimulation) {
  zeph::ZephMsg message;
  auto* ears = message.mutable_earscallback();
  ears->set_type(stimulation.choice<zeph::EarsCallback::Type>("type"));
  if (stimulation.has("step")) ears->set_step(stimulation.number("step"));
  if (stimulation.has("length")) ears->set_length(stimulation.number("length"));
  if (!stimulation.understood()) return;
  stimulation.send(message);
  if (ears->type() == Type::BLOCKED_LEFT || ears->type() == Type::BLOCKED_RIGHT) {
    stimulation.device().end(Work::kEars, zeph::CANCELLED);
  }
}

std::string atAGlance(const DeviceView& view) {
  const auto& [left, right] = view.state.ears;
  std::string stand = "left " + std::to_string(left) + ", right " + std::to_string(right);
  if (underwayIn(view, Work::kEars) == nullptr) return stand;
  const Ears& towards = view.state.earsTowards;
  return stand + ", turn to " + std::to_string(towards.left) + " and " +
         std::to_string(towards.right);
}

void show(const DeviceView& view, JsonObject& whole) {
  const auto& [left, right] = view.state.ears;
  JsonObject shown = whole.object("ears");
  shown.number("left", left).number("right", right);
  const Ears& towards = view.state.earsTowards;
  shown.object("towards").number("left", towards.left).number("right", towards.right);
  shown.number("step", kTimeOfAnEarStep.count()).number("most", kMostEarSteps);
}

constexpr Argument kTurn[] = {
    {.name = "side",
     .kind = Argument::Kind::kChoice,
     .choices =
         [] {
           return std::vector<std::string>{"LEFT", "RIGHT"};
         }},
    {.name = "step",
     .usage = "STEP",
     .what = "the step",
     .kind = Argument::Kind::kNumber,
     .least = 0,
     .most = kMostEarSteps},
};
constexpr Argument kTell[] = {
    {.name = "type",
     .usage = "START_LEFT|STOP_LEFT|BLOCKED_LEFT|..._RIGHT",
     .what = "what happened",
     .kind = Argument::Kind::kChoice,
     .choices = namesOf<zeph::EarsCallback::Type_descriptor>},
    {.name = "step", .usage = "STEP", .kind = Argument::Kind::kNumber, .needed = false},
    {.name = "length", .usage = "LENGTH", .kind = Argument::Kind::kNumber, .needed = false},
};

constexpr Command kCommands[] = {{zeph::ZephMsg::kEarsFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {
    {"ear", Stimulus::Group::kBody, Stimulus::For::kDevice, kTurn,
     "turn an ear by hand, to a step from 0 to 16", turnByHand},
    {"ears", Stimulus::Group::kBody, Stimulus::For::kApplications, kTell,
     "tell one thing of an ear; a blocked ear stops what the ears are doing", tellOfEars},
};
constexpr Glance kGlances[] = {{"ears", atAGlance}};

}  // namespace

constinit const Feature kEarsFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
