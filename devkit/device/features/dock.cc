// The dock: an LED like the device's own, and a motor.
#include <algorithm>
#include <chrono>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

// A move without a time goes as far as the dock can.
constexpr milliseconds kWholeWay{2000};

void move(const Exchange& exchange, const zeph::Dock::Move& move) {
  zeph::Dock::Type& moving = exchange.state().dock.moving;
  exchange.device().end(Work::kDockMove, zeph::CANCELLED);
  moving = move.cmd();
  if (move.cmd() != zeph::Dock::STOP) {
    const milliseconds time = move.time() > 0 ? milliseconds(move.time()) : kWholeWay;
    exchange.undertake(Work::kDockMove, time,
                       [&moving](zeph::ZephMsg& /*event*/) { moving = zeph::Dock::STOP; });
  }
  exchange.respond(zeph::OK);
}

}  // namespace

void answerDock(const Exchange& exchange) {
  const zeph::Dock& dock = exchange.request().dock();
  if (dock.has_move()) {
    move(exchange, dock.move());
  } else if (dock.has_led()) {
    answerLedCommand(exchange, dock.led(), exchange.state().dock.led, Work::kDockLed);
  } else {
    exchange.respond(zeph::ERROR, "the dock needs a move or an LED command");
  }
}

void tellOfDock(Stimulation& stimulation) {
  zeph::ZephMsg message;
  message.mutable_dock()->set_status(stimulation.number("STATUS"));
  if (stimulation.hasMore()) message.mutable_dock()->set_change(stimulation.number("CHANGE"));
  if (stimulation.understood()) stimulation.send(message);
}

}  // namespace morvik::devkit
