// morvik.dock: the LED of the dock, and its motion.
#include <glib.h>

#include <memory>
#include <optional>
#include <string>

#include "channel/request.h"
#include "devices/devices.h"
#include "devices/led-functions.h"

namespace morvik {
namespace {

// The requests write the same lines as those of the device's own LED, on purpose: who reads
// "LED Light" in the log does not see which of the two it was. Only the answers' lines have the
// label.
constexpr LedPlace kDockLed{"DOCKLED", [](zeph::ZephMsg& message) -> zeph::Led& {
                              return *message.mutable_dock()->mutable_led();
                            }};

void light(const Args& args) { lightLed(args, kDockLed); }

void fade(const Args& args) { fadeLed(args, kDockLed); }

void pulse(const Args& args) { pulseLed(args, kDockLed); }

constexpr const char* kMoveLabel = "DOCKMOVE";

// Capitals only, as scripts write them.
std::optional<zeph::Dock::Type> directionOf(const std::string& text) {
  if (text == "UP") return zeph::Dock::UP;
  if (text == "DOWN") return zeph::Dock::DOWN;
  if (text == "RIGHT") return zeph::Dock::RIGHT;
  if (text == "LEFT") return zeph::Dock::LEFT;
  if (text == "STOP") return zeph::Dock::STOP;
  return std::nullopt;
}

// move(direction, [time], [callback]). Unlike an LED's times, one that is no number is refused and
// not converted.
bool isMove(const Args& args) {
  const int count = args.Length();
  return count >= 1 && count <= 3 && args[0]->IsString() && (count < 2 || args[1]->IsNumber()) &&
         (count < 3 || args[2]->IsFunction());
}

// Called in place of the script's function.
void warnOfNoFunction(const Args& /*args*/) {
  g_warning("%s: the reply finds no function", kMoveLabel);
}

// move(direction, time, callback) takes the callback and never calls it, on purpose: the function
// is looked for in the second place, where the time stands. So a script hears nothing of a move's
// end, and every answer to such a move leaves a warning in the log. What waits for the answer is a
// function of our own, which writes it.
std::shared_ptr<EventCallbackData> replyToNobody(const Args& args) {
  const v8::Local<v8::Context> context = args.GetIsolate()->GetCurrentContext();
  return std::make_shared<EventCallbackData>(
      kMoveLabel, v8::Function::New(context, warnOfNoFunction).ToLocalChecked());
}

void move(const Args& args) {
  Request request(args);
  request.expect(isMove(args));
  request.expectInteractive();
  const auto direction = directionOf(request.ascii(0));
  const auto time = static_cast<std::int32_t>(request.uint32(1));  // 0 where none was given
  if (request.refused()) return;
  zeph::Dock::Move& message = *request.message().mutable_dock()->mutable_move();
  message.set_cmd(direction.value_or(zeph::Dock::STOP));
  message.set_time(time);
  if (args.Length() == 3) {
    request.sendFor(EventCallback, replyToNobody(args));
  } else {
    request.send();
  }
  // The request has gone out all the same, on purpose: the script catches an exception and the
  // server gets a STOP, which ends a move that is under way and starts none.
  if (!direction) throwText(args.GetIsolate(), "Wrong 1st arguments");
}

constexpr Binding kFunctions[] = {
    {"light", light}, {"fade", fade}, {"pulse", pulse}, {"move", move}};

}  // namespace

std::span<const Binding> dockFunctions() { return kFunctions; }

}  // namespace morvik
