// morvik.connect, start, stop, ping and info: how a script reaches the device server and asks for
// the device.
#include "channel/script-functions.h"

#include <glib.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "channel/device-info.h"
#include "channel/interactive-mode.h"
#include "channel/pump.h"
#include "channel/request.h"
#include "host/morvik-data.h"
#include "host/system-log.h"
#include "host/uuid.h"

namespace morvik {
namespace {

// A plain object in third place is refused and anything else there is let pass, on purpose: a
// script that hands options over hears "Wrong arguments", and connect(host, port, 1) connects.
bool acceptsConnect(const Args& args) {
  if (args.Length() < 2 || !args[0]->IsString() || !args[1]->IsInt32()) return false;
  return args.Length() == 2 || (args.Length() == 3 && !args[2]->IsObject());
}

enum class StartForm { kWrong, kFunction, kFunctionObject, kFunctionObjectId };

StartForm formOf(const Args& args) {
  if (args.Length() < 1 || !args[0]->IsFunction()) return StartForm::kWrong;
  if (args.Length() == 1) return StartForm::kFunction;
  if (!args[1]->IsObject()) return StartForm::kWrong;
  if (args.Length() == 2) return StartForm::kFunctionObject;
  return args.Length() == 3 ? StartForm::kFunctionObjectId : StartForm::kWrong;
}

// A script's value as an interactive id, which ends at its first zero byte, so that the log shows
// the same id as the wire.
std::optional<std::string> idText(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  auto id = utf8Text(isolate, value);
  if (id) id->resize(std::strlen(id->c_str()));
  return id;
}

// The id to ask for.
std::optional<std::string> chooseId(const Args& args, StartForm form) {
  if (form != StartForm::kFunctionObjectId) return newUuid();
  g_warning("DEPRECATED Use SetInteractive");
  return idText(args.GetIsolate(), args[2]);
}

std::unique_ptr<InteractiveData> recordOf(const Args& args, StartForm form, const std::string& id,
                                          MorvikData& instance) {
  auto record =
      std::make_unique<InteractiveData>(id, instance, ScriptFunction(args[0].As<v8::Function>()));
  if (form != StartForm::kFunction) {
    record->object.Reset(args.GetIsolate(), args[1].As<v8::Object>());
  }
  return record;
}

}  // namespace

// A name that is not found and a server that refuses look alike to the script; the log tells.
void connect(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!acceptsConnect(args)) return throwText(isolate, "Wrong arguments");
  ArgumentReader reader(args);
  const std::string host = reader.ascii(0);
  const std::int32_t port = reader.int32(1);
  if (connectServer(host.c_str(), port, &currentInstance(isolate)) == 0) return;
  g_warning("connection refused");
  throwText(isolate, "connection refused");
}

void start(const Args& args) {
  const HeldRecords held;
  v8::Isolate* isolate = args.GetIsolate();
  g_debug("starting interactiveMode");
  g_debug("check arguments");
  const StartForm form = formOf(args);
  if (form == StartForm::kWrong) return throwText(isolate, "Wrong arguments");
  const auto id = chooseId(args, form);
  if (!id) return;
  MorvikData& instance = currentInstance(isolate);
  g_debug("MorvikData: %p", static_cast<void*>(&instance));
  if (instance.socket == -1) return throwText(isolate, "Connect first");
  g_debug("starting interactiveMode: %s", id->c_str());
  askForInteractiveMode(recordOf(args, form, *id, instance));
}

// Nothing changes here, and functions of the device go on working: what matters is the server's
// stop notice.
void stop(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  g_debug("stop interactiveMode");
  if (args.Length() != 0) return throwText(isolate, "Wrong arguments");
  const MorvikData& instance = currentInstance(isolate);
  if (!instance.interactiveID) return throwText(isolate, "Must be in interactive mode");
  g_debug("stop interactiveMode: %s", instance.interactiveID->c_str());
  askToStop(instance);
}

void ping(const Args& args) {
  Request request(args, "PingFunction", 0);
  if (request.refused()) return;
  g_message("PingFunction");
  request.message().mutable_ping();
  request.send();
}

// The line stands in the log for a call outside interactive mode as well.
void info(const Args& args) {
  Request request(args);
  request.expectFunction(0);
  if (request.refused()) return;
  g_message("ConfigMorvikGet");
  request.expectInteractive();
  if (request.refused()) return;
  request.message().mutable_morvikinfo_query();
  request.sendForFirst(InfoMorvikCallbackFunction);
}

// Bound to no name: no script reaches it.
void SetInteractive(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  g_debug("set interactiveID");
  if (args.Length() != 2 || !args[0]->IsString() || !args[1]->IsFunction()) {
    return throwText(isolate, "Wrong arguments");
  }
  MorvikData& instance = currentInstance(isolate);
  if (instance.socket == -1) return throwText(isolate, "Connect first");
  const std::string id = *idText(isolate, args[0]);
  g_debug("set interactiveID: %s", id.c_str());
  instance.interactiveID = id;
  const auto function = args[1].As<v8::Function>();
  // Called from within script: what it throws belongs to the caller.
  [[maybe_unused]] const auto ignored =
      function->Call(isolate->GetCurrentContext(), function, 0, nullptr);
}

}  // namespace morvik
