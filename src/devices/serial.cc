// morvik.serial: open__, write__, addListener__, and what the feature holds ready beside them. The
// server handles the ports. The lines on standard output are part of what the functions do.
#include "devices/serial.h"

#include <glib.h>

#include <cstdio>

#include "channel/connection.h"
#include "channel/message.h"
#include "channel/request.h"
#include "devices/devices.h"
#include "host/exceptions.h"
#include "host/morvik-data.h"
#include "host/system-log.h"

namespace morvik {
namespace {

constexpr std::int32_t kDefaultBaud = 9600;

// The port that open__ opened last; one for the whole process.
std::string& currentPortKeptForLife() {
  static auto& port = *new std::string;
  return port;
}

void sendOpen(Request& request, const std::string& port, std::int32_t baud) {
  auto& message = *request.message().mutable_serial()->mutable_open();
  message.set_port(port);
  message.set_baud(baud);
  request.send();
}

void sendWrite(Request& request, const std::string& port, const std::string& data,
               const std::string& base) {
  auto& message = *request.message().mutable_serial()->mutable_write();
  message.set_port(port);
  message.set_data(data);
  message.set_base(base);
  request.send();
}

// Looks at the second of exactly two arguments; with more of them the default stands, on purpose:
// open__(port, 115200, f) opens at 9600 and throws nothing.
std::optional<std::int32_t> wantedBaud(const Args& args) {
  if (args.Length() != 2) return kDefaultBaud;
  if (args[1]->IsInt32()) return args[1].As<v8::Int32>()->Value();
  throwText(args.GetIsolate(), "arg 2 is Integer baudrate");
  return std::nullopt;
}

void openPort(const Args& args) {
  Request request(args);
  request.expect(args.Length() >= 1);
  const auto baud = wantedBaud(args);
  if (!baud) return;
  request.expectInteractive();
  const std::string port = request.ascii(0);
  if (request.refused()) return;
  currentPortKeptForLife() = port;
  sendOpen(request, port, *baud);
}

// Looks at no argument, on purpose: one that is missing goes out as the text "undefined", and the
// server, not the script, is told of the mistake.
void write(const Args& args) {
  Request request(args);
  request.expectInteractive();
  const std::string port = request.ascii(0);
  const std::string base = request.ascii(1);
  const std::string data = request.ascii(2);
  if (!request.refused()) sendWrite(request, port, data, base);
}

void writeCurrent(const Args& args, const char* base) {
  Request request(args);
  request.expect(args.Length() == 1);
  request.expectInteractive();
  const std::string data = request.ascii(0);
  if (request.refused()) return;
  const std::string& port = currentPortKeptForLife();
  std::printf("1 %s %s\n", data.c_str(), port.c_str());
  sendWrite(request, port, data, base);
}

// Calls the function `onMessage` of a script's object. Keeps its handles as long as it lives.
class SerialMsgCallback2 final : public ZephMsgListener {
 public:
  SerialMsgCallback2(v8::Isolate* isolate, v8::Local<v8::Object> object)
      : object_(isolate, object), context_(isolate, isolate->GetCurrentContext()) {}

  bool onMessage(const zeph::ZephMsg& message) override {
    return !message.has_serialcallback() || tell(message.serialcallback().readline());
  }

 private:
  bool tell(const zeph::SerialCallback::Readline& line) const;

  v8::Global<v8::Object> object_;
  v8::Global<v8::Context> context_;
};

// What the object holds now, so that a script may exchange its function; reading it may run script,
// which may throw.
std::optional<v8::Local<v8::Function>> functionOf(v8::Local<v8::Context> context,
                                                  v8::Local<v8::Object> object) {
  const v8::TryCatch tryCatch(v8::Isolate::GetCurrent());
  v8::Local<v8::Value> value;
  if (!object->Get(context, toScript("onMessage")).ToLocal(&value)) {
    reportException(tryCatch);
    return std::nullopt;
  }
  if (value->IsFunction()) return value.As<v8::Function>();
  g_warning("serial listener without a function onMessage");
  return std::nullopt;
}

// The function itself is `this`, on purpose, as for every listener: onMessage(object, port, data)
// finds its object in the first argument, and `this.lines` is a property of the function.
bool SerialMsgCallback2::tell(const zeph::SerialCallback::Readline& line) const {
  sendHeldRecords();
  std::puts("call onMessage");
  std::puts("cast");
  std::puts("arg0");
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const ScriptRun run(isolate);
  const auto context = context_.Get(isolate);
  const v8::Context::Scope entered(context);
  const auto object = object_.Get(isolate);
  const auto function = functionOf(context, object);
  if (!function) return false;
  std::puts("call onMessage");
  return ScriptFunction(*function).call({object, toScript(line.port()), toScript(line.data())});
}

void addObjectListener(const Args& args) {
  std::puts("dans c++");
  v8::Isolate* isolate = args.GetIsolate();
  if (!args[0]->IsObject()) return throwText(isolate, "Wrong arguments");
  appendListener(isolate, std::make_unique<SerialMsgCallback2>(isolate, args[0].As<v8::Object>()));
}

// Any other count than one and two is let pass, on purpose: with none or three arguments there is
// no exception; a function in front is added, and anything else there leaves a warning.
bool acceptsPlainListener(const Args& args) {
  if (args.Length() == 1) return args[0]->IsFunction();
  return args.Length() != 2 || (args[0]->IsFunction() && args[1]->IsString());
}

// Goes out in any mode, so with an interactive id only where there is one.
void sendReadline(v8::Isolate* isolate, const std::string& base) {
  const MorvikData& instance = currentInstance(isolate);
  const auto message =
      newZephMsg(instance.interactiveID ? instance.interactiveID->c_str() : nullptr);
  auto& line = *message->mutable_serialcallback()->mutable_readline();
  line.set_port(currentPortKeptForLife());
  line.set_data("");
  line.set_base(base);
  sendZephMsg(instance.socket, *message);
}

constexpr Binding kFunctions[] = {
    {"open__", openPort}, {"write__", write}, {"addListener__", addObjectListener}};

}  // namespace

bool SerialMsgCallback::onMessage(const zeph::ZephMsg& message) {
  if (!message.has_serialcallback()) return true;
  return function.call({toScript(message.serialcallback().readline().data())});
}

void addPlainListener(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!acceptsPlainListener(args)) return throwText(isolate, "Wrong arguments");
  if (!args[0]->IsFunction()) return g_warning("serial listener without a function");
  appendListener(isolate, std::make_unique<SerialMsgCallback>(args[0].As<v8::Function>()));
  if (args.Length() == 2) sendReadline(isolate, ArgumentReader(args).ascii(1));
}

void writeH(const Args& args) { writeCurrent(args, "h"); }

void writeA(const Args& args) { writeCurrent(args, "a"); }

void openWithoutDefaults(const Args& args) {
  Request request(args);
  const std::string port = request.ascii(0);
  const auto baud = static_cast<std::int32_t>(request.uint32(1));  // the 32 bits as they are
  request.expectInteractive();
  if (!request.refused()) sendOpen(request, port, baud);
}

std::span<const Binding> serialFunctions() { return kFunctions; }

}  // namespace morvik
