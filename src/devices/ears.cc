// morvik.ears: moves and resets the two ears, and tells when they move or are blocked.
#include <glib.h>

#include <memory>
#include <string>

#include "channel/message.h"
#include "channel/request.h"
#include "devices/devices.h"
#include "devices/listener.h"

namespace morvik {
namespace {

// `null`, and nothing else, leaves an ear out: `undefined` is a position, 0. `relative` stays
// absent for absolute positions, so the server never sees it false.
void sendPositions(const Args& args, bool relative) {
  Request request(args, "EARS", 2);
  if (request.refused()) return;
  zeph::Ears& ears = *request.message().mutable_ears();
  if (!args[0]->IsNull()) ears.set_left(request.int32(0));
  if (!args[1]->IsNull()) ears.set_right(request.int32(1));
  if (relative) ears.set_relative(true);
  if (!request.refused()) request.send();
}

void move(const Args& args) { sendPositions(args, false); }

void moveRelative(const Args& args) { sendPositions(args, true); }

// The script hears one name and two positions: fn(code, left, right), an empty text and zeroes for
// what the answer does not tell. Of an answer with an event and a response the event counts alone,
// on purpose. Everywhere else the function is called for both, the response first; a script that
// resets the ears is called once for each message.
void EarsResetCallback(void* data, const zeph::ZephMsg& message) {
  g_message("EarsResetCallback");
  const TemporaryContext temporary;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  std::string code;
  if (message.has_event()) {
    code = nameOf(message.event().code());
  } else if (message.has_response()) {
    code = nameOf(message.response().code());
  }
  static_cast<const ScriptFunction*>(data)->call(
      {toScript(code), v8::Number::New(isolate, message.ears().left()),
       v8::Number::New(isolate, message.ears().right())});
}

enum class Side { kLeft, kRight, kBoth };

// The interactive test comes before the arguments here, on purpose: outside interactive mode a
// script reads "Must be in interactive mode" for reset(1), where move(1) says "Wrong arguments". In
// a reset, `left` and `right` are no positions: 1 marks the ear that is meant.
void sendReset(const Args& args, Side side) {
  Request request(args);
  request.expectInteractive();
  request.expectArguments(0);
  if (request.refused()) return;
  zeph::Ears& ears = *request.message().mutable_ears();
  ears.set_reset(true);
  if (side != Side::kLeft) ears.set_right(1);
  if (side != Side::kRight) ears.set_left(1);
  if (args.Length() == 0) return request.send();
  request.sendFor(EarsResetCallback, std::make_shared<ScriptFunction>(args[0].As<v8::Function>()));
}

void reset(const Args& args) { sendReset(args, Side::kBoth); }

void resetRight(const Args& args) { sendReset(args, Side::kRight); }

void resetLeft(const Args& args) { sendReset(args, Side::kLeft); }

// The script hears what happened, the step and the length, 0 where one is absent.
class EarsMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_earscallback()) return true;
    v8::Isolate* isolate = v8::Isolate::GetCurrent();
    const zeph::EarsCallback& event = message.earscallback();
    return function.call({toScript(nameOf(event.type())), v8::Integer::New(isolate, event.step()),
                          v8::Integer::New(isolate, event.length())});
  }
};

constexpr Binding kFunctions[] = {
    {"move", move},           {"moveRelative", moveRelative},
    {"reset", reset},         {"resetRight", resetRight},
    {"resetLeft", resetLeft}, {"addListener", addListener<EarsMsgCallback>},
};

}  // namespace

std::span<const Binding> earsFunctions() { return kFunctions; }

}  // namespace morvik
