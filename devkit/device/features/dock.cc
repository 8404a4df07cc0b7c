// The dock: an LED like the device's own, and a motor.
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/features/led.h"
#include "device/stimulation.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

// A move without a time goes as far as the dock can.
constexpr milliseconds kWholeWay{2000};

void setMoving(Device& device, zeph::Dock::Type moving) {
  device.change("dock", [&](DeviceState& state) { state.dock.moving = moving; });
}

void move(const Exchange& exchange, const zeph::Dock::Move& move) {
  Device& device = exchange.device();
  device.end(Work::kDockMove, zeph::CANCELLED);
  setMoving(device, move.cmd());
  if (move.cmd() != zeph::Dock::STOP) {
    const milliseconds time = move.time() > 0 ? milliseconds(move.time()) : kWholeWay;
    exchange.undertake(Work::kDockMove, time, [&device](zeph::ZephMsg& /*event*/) {
      setMoving(device, zeph::Dock::STOP);
    });
  }
  exchange.respond(zeph::OK);
}

void answer(const Exchange& exchange) {
  const zeph::Dock& dock = exchange.request().dock();
  if (dock.has_move()) {
    move(exchange, dock.move());
  } else if (dock.has_led()) {
    answerLedCommand(exchange, dock.led(), Work::kDockLed, "dock",
                     [](DeviceState& state) -> Led& { return state.dock.led; });
  } else {
    exchange.respond(zeph::ERROR, "the dock needs a move or an LED command");
  }
}

void tellState(Stimulation& stimulation) {
  zeph::ZephMsg message;
  message.mutable_dock()->set_status(stimulation.number("status"));
  if (stimulation.has("change")) message.mutable_dock()->set_change(stimulation.number("change"));
  if (!stimulation.understood()) return;
  stimulation.device().change("dock", [&](DeviceState& state) {
    state.dock.status = message.dock().status();
    state.dock.change.reset();
    if (message.dock().has_change()) state.dock.change = message.dock().change();
  });
  stimulation.send(message);
}

std::string motionAtAGlance(const DeviceView& view) {
  const Underway* underway = underwayIn(view, Work::kDockMove);
  return underway == nullptr ? ""
                             : "moves " + zeph::Dock::Type_Name(view.state.dock.moving) + " for " +
                                   timeLeftOf(view, *underway);
}

std::string lightAtAGlance(const DeviceView& view) {
  const Led& led = view.state.dock.led;
  return led.color.empty() ? "" : ledAtAGlance(view, led, Work::kDockLed);
}

void show(const DeviceView& view, JsonObject& whole) {
  const Dock& dock = view.state.dock;
  JsonObject shown = whole.object("dock");
  shown.text("moving", zeph::Dock::Type_Name(dock.moving));
  showLed(dock.led, shown.object("led"));
  if (dock.status) shown.number("status", *dock.status);
  if (dock.change) shown.number("change", *dock.change);
}

constexpr Argument kState[] = {
    {.name = "status", .usage = "STATUS", .kind = Argument::Kind::kNumber},
    {.name = "change", .usage = "CHANGE", .kind = Argument::Kind::kNumber, .needed = false},
};

constexpr Command kCommands[] = {{zeph::ZephMsg::kDockFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {{"dock", Stimulus::Group::kAround, Stimulus::For::kApplications,
                                  kState, "tell the state of the dock, in two numbers", tellState}};
constexpr Glance kGlances[] = {{"dock", motionAtAGlance}, {"dock LED", lightAtAGlance}};

}  // namespace

constinit const Feature kDockFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
