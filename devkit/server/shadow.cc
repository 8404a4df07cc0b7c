// Answers and events to state.
#include "server/shadow.h"

#include <algorithm>
#include <utility>

namespace morvik::devkit {
namespace {

// An application whose server never answers keeps no more than that.
constexpr std::size_t kMostWaiting = 256;

bool isRefusal(const zeph::ZephMsg& answer) {
  if (answer.has_response())
    return !answer.response().has_code() || answer.response().code() != zeph::OK;
  return answer.has_event() && answer.event().code() != zeph::TERMINATED;
}

// How long these take is known from the command; of all others the device alone knows.
bool hasKnownLength(Work work) {
  return work == Work::kLed || work == Work::kDockLed || work == Work::kEars ||
         work == Work::kDockMove;
}

// What the device tells of itself. Several applications may be told the same, each by a message of
// its own.

void standAt(Device& device, int Ears::*side, int step) {
  device.change("ears", [&](DeviceState& state) {
    state.ears.*side = state.earsTowards.*side = std::clamp(step, 0, kMostEarSteps);
  });
}

// An ear that has begun still has its way before it; one that has stopped may have stopped anywhere
// on it. Once both stand, the turn as it was expected is over.
void hearEars(Device& device, AppNumber /*to*/, const zeph::ZephMsg& message) {
  using Type = zeph::EarsCallback;
  const zeph::EarsCallback& told = message.earscallback();
  const bool isStart = told.type() == Type::START_LEFT || told.type() == Type::START_RIGHT;
  if (isStart || !told.has_step()) return;
  const bool isLeft = told.type() == Type::STOP_LEFT || told.type() == Type::BLOCKED_LEFT;
  standAt(device, isLeft ? &Ears::left : &Ears::right, told.step());
  const DeviceState& state = device.state();
  const bool bothStand =
      state.ears.left == state.earsTowards.left && state.ears.right == state.earsTowards.right;
  if (bothStand) static_cast<void>(device.take(Work::kEars));
}

// With a response this is where they are sent, with an event where they have come to.
void hearPositions(Device& device, AppNumber /*to*/, const zeph::ZephMsg& message) {
  if (!message.has_event()) return;
  if (message.ears().has_left()) standAt(device, &Ears::left, message.ears().left());
  if (message.ears().has_right()) standAt(device, &Ears::right, message.ears().right());
}

void hearMode(Device& device, AppNumber to, const zeph::ZephMsg& message) {
  if (message.interactivemode().action() != zeph::InteractiveMode::STOP) return;
  device.changeApplication(to, [](Application& application) { application.interactiveId = ""; });
}

void hearPlayer(Device& device, AppNumber /*to*/, const zeph::ZephMsg& message) {
  using Told = zeph::MultimediaCallback;
  const auto action = message.multimediacallback().action();
  if (action == Told::MUSIC_UPDATE) return;
  device.change("player", [&](DeviceState& state) {
    const bool plays = action == Told::PLAY || action == Told::RESUME;
    state.player.mode = plays                   ? Player::Mode::kPlaying
                        : action == Told::PAUSE ? Player::Mode::kPaused
                                                : Player::Mode::kStopped;
  });
  if (action == Told::STOP) static_cast<void>(device.take(Work::kSound));
}

void hearDock(Device& device, AppNumber /*to*/, const zeph::ZephMsg& message) {
  if (!message.dock().has_status()) return;
  device.change("dock", [&](DeviceState& state) {
    state.dock.status = message.dock().status();
    state.dock.change.reset();
    if (message.dock().has_change()) state.dock.change = message.dock().change();
  });
}

void hearCall(Device& device, AppNumber to, const zeph::ZephMsg& message) {
  using Told = zeph::M2mCallback;
  const zeph::M2mCallback& told = message.m2mcallback();
  device.changeApplication(to, [&](Application& application) {
    const unsigned turn = application.call.turn + 1;
    application.call = {};
    application.call.turn = turn;
    if (told.type() == Told::TERMINATED) return;
    const bool rings = told.type() == Told::INCOMING;
    application.call.state = rings ? Call::State::kRinging : Call::State::kTalking;
    application.call.correspondant = told.correspondant();
  });
}

struct Hearing {
  int field;
  void (*hear)(Device& device, AppNumber to, const zeph::ZephMsg& message);
};
constexpr Hearing kHearings[] = {
    {zeph::ZephMsg::kEarsCallbackFieldNumber, hearEars},
    {zeph::ZephMsg::kEarsFieldNumber, hearPositions},
    {zeph::ZephMsg::kInteractiveModeFieldNumber, hearMode},
    {zeph::ZephMsg::kMultimediaCallbackFieldNumber, hearPlayer},
    {zeph::ZephMsg::kDockFieldNumber, hearDock},
    {zeph::ZephMsg::kM2MCallbackFieldNumber, hearCall},
};

}  // namespace

Shadow::Shadow(Events& events, Scheduler* scheduler)
    : device_(*this, scheduler != nullptr ? *scheduler : agenda_),
      echo_(events),
      tells_(device_.events(), echo_),
      hears_(events, static_cast<Observer&>(*this)) {}

void Shadow::Echo::happened(const Event& event) {
  if (const auto* changed = std::get_if<Changed>(&event.what)) {
    to_.raise(*changed);
  } else if (std::holds_alternative<Began>(event.what) ||
             std::holds_alternative<Ended>(event.what)) {
    to_.raise(Changed{"work"});
  }
}

void Shadow::happened(const Event& event) {
  if (const auto* came = std::get_if<Came>(&event.what)) {
    device_.applicationCame(came->application);
  } else if (const auto* left = std::get_if<Left>(&event.what)) {
    waiting_.erase(left->application);
    device_.applicationLeft(left->application);
  } else if (const auto* received = std::get_if<Received>(&event.what)) {
    await(*received);
  } else if (const auto* sent = std::get_if<Sent>(&event.what)) {
    hear(sent->application, *sent->message);
  }
}

void Shadow::await(const Received& received) {
  Waiting& waiting = waiting_[received.application];
  waiting.push_back(received.message);
  if (waiting.size() > kMostWaiting) waiting.pop_front();
}

void Shadow::hear(AppNumber application, const zeph::ZephMsg& message) {
  if (message.has_correlationid()) {
    carryOut(application, message);
    if (!message.has_response()) endWork(application, message);
  }
  const auto* reflection = zeph::ZephMsg::GetReflection();
  for (const Hearing& row : kHearings) {
    const auto* field = zeph::ZephMsg::descriptor()->FindFieldByNumber(row.field);
    if (reflection->HasField(message, field)) row.hear(device_, application, message);
  }
}

// The first answer tells whether a command was taken.
void Shadow::carryOut(AppNumber application, const zeph::ZephMsg& answer) {
  Waiting& waiting = waiting_[application];
  const auto found = std::ranges::find_if(
      waiting, [&](const auto& command) { return command->id() == answer.correlationid(); });
  if (found == waiting.end()) return;
  const PassedMessage command = *found;
  waiting.erase(found);
  if (isRefusal(answer)) return;
  receive(device_, application, *command);
  letEndBeTold(command->id());
}

void Shadow::letEndBeTold(const std::string& request) {
  for (const Underway& underway : device_.works().all()) {
    const bool isTold = underway.request == request && !hasKnownLength(underway.work);
    if (isTold) device_.suspend(underway.work);
  }
}

void Shadow::endWork(AppNumber application, const zeph::ZephMsg& answer) {
  const auto code = answer.has_event() ? answer.event().code() : zeph::TERMINATED;
  for (const Underway& underway : device_.works().all()) {
    const bool isMeant =
        underway.application == application && underway.request == answer.correlationid();
    if (isMeant) device_.end(underway.work, code);
  }
}

}  // namespace morvik::devkit
