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

// Its lines in the log are those of the device's own LED, on purpose.
constexpr LedPlace kDockLed{"DOCKLED", [](zeph::ZephMsg& message) -> zeph::Led& {
                              return *message.mutable_dock()->mutable_led();
                            }};

void light(const Args& args) { lightLed(args, kDockLed); }

void fade(const Args& args) { fadeLed(args, kDockLed); }

void pulse(const Args& args) { pulseLed(args, kDockLed); }

constexpr const char* kMoveLabel = "DOCKMOVE";

std::optional<zeph::Dock::Type> directionOf(const std::string& text) {
  if (text == "UP") return zeph::Dock::UP;
  if (text == "DOWN") return zeph::Dock::DOWN;
  if (text == "RIGHT") return zeph::Dock::RIGHT;
  if (text == "LEFT") return zeph::Dock::LEFT;
  if (text == "STOP") return zeph::Dock::STOP;
  return std::nullopt;
}

bool isMove(const Args& args) {
  const int count = args.Length();
  return count >= 1 && count <= 3 && args[0]->IsString() && (count < 2 || args[1]->IsNumber()) &&
         (count < 3 || args[2]->IsFunction());
}

// Stands where the reply looks for the script's function.
void warnOfNoFunction(const Args& /*args*/) {
  g_warning("%s: the reply finds no function", kMoveLabel);
}

// The function in third place is tested and then left aside, on purpose: the reply looks in second
// place, where the time is, so the script never hears an answer to a move.
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
  // The request has gone out all the same, on purpose: STOP moves nothing.
  if (!direction) throwText(args.GetIsolate(), "Wrong 1st arguments");
}

constexpr Binding kFunctions[] = {
    {"light", light}, {"fade", fade}, {"pulse", pulse}, {"move", move}};

}  // namespace

std::span<const Binding> dockFunctions() { return kFunctions; }

}  // namespace morvik
