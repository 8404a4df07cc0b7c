// morvik.start, morvik.stop, the server's answers to them and its stop notice.
#include "channel/interactive-mode.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "channel/callback-table.h"
#include "channel/channel-functions.h"
#include "channel/connection.h"
#include "channel/message.h"
#include "host/morvik-data.h"
#include "host/uuid.h"

namespace morvik {
namespace {

enum class StartForm { kWrong, kFunction, kFunctionObject, kFunctionObjectId };

StartForm formOf(const Args& args) {
  if (args.Length() < 1 || !args[0]->IsFunction()) return StartForm::kWrong;
  if (args.Length() == 1) return StartForm::kFunction;
  if (!args[1]->IsObject()) return StartForm::kWrong;
  if (args.Length() == 2) return StartForm::kFunctionObject;
  return args.Length() == 3 ? StartForm::kFunctionObjectId : StartForm::kWrong;
}

// A script's value as an interactive id, which ends at its first zero byte; nothing when the
// value's conversion threw.
std::optional<std::string> idText(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  auto id = utf8Text(isolate, value);
  if (id) id->resize(std::strlen(id->c_str()));
  return id;
}

// The id to ask for; nothing when the third argument's conversion threw.
std::optional<std::string> chooseId(const Args& args, StartForm form) {
  if (form != StartForm::kFunctionObjectId) return newUuid();
  g_warning("DEPRECATED Use SetInteractive");
  return idText(args.GetIsolate(), args[2]);
}

std::shared_ptr<PendingStart> newPendingStart(const Args& args, StartForm form,
                                              const std::string& id, MorvikData& instance) {
  auto record =
      std::make_unique<InteractiveData>(id, instance, ScriptFunction(args[0].As<v8::Function>()));
  if (form != StartForm::kFunction) {
    record->object.Reset(args.GetIsolate(), args[1].As<v8::Object>());
  }
  auto pending = std::make_shared<PendingStart>();
  pending->record = std::move(record);
  return pending;
}

void sendStart(const MorvikData& instance, const std::string& id,
               std::shared_ptr<PendingStart> pending) {
  const auto message = newZephMsg(nullptr);  // nothing is granted yet, so the envelope holds no id
  message->mutable_interactivemode()->set_interactiveid(id);
  message->mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  auto entry = std::make_shared<CallbackEntry>();
  entry->function = InteractiveCallback;
  entry->data = std::move(pending);
  g_debug("function pointer: %p", reinterpret_cast<void*>(InteractiveCallback));
  sendZephMsgCallback(instance.socket, *message, std::move(entry));
}

void callGranted(const InteractiveData& record) {
  g_debug("calling interactiveMode function");
  record.callback.callWith(record.object);
}

// A refusal ends the process at once, and says so at debug level only, on purpose.
void hearCode(const InteractiveData& record, zeph::VReturnCode code) {
  if (code != zeph::OK) {
    g_debug("Interactive mode is not valid: EXIT !");
    std::exit(1);
  }
  g_debug("MorvikData: %p", static_cast<void*>(record.data));
  record.data->interactiveID = record.id;
  callGranted(record);
}

}  // namespace

// A record that is swept from the table unanswered goes without a word.
InteractiveData::~InteractiveData() {
  if (answered) g_debug("clean InteractiveData");
}

void InteractiveCallback(void* data, const zeph::ZephMsg& message) {
  g_debug("InteractiveCallback...");
  const auto record = std::move(static_cast<PendingStart*>(data)->record);
  if (!record) return;  // answered before
  record->answered = true;
  if (!message.has_response()) return;
  g_debug("Response...");
  if (message.response().has_code()) hearCode(*record, message.response().code());
}

void start(const Args& args) {
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
  sendStart(instance, *id, newPendingStart(args, form, *id, instance));
}

// Nothing changes here: what matters is the server's stop notice.
void stop(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  g_debug("stop interactiveMode");
  if (args.Length() != 0) return throwText(isolate, "Wrong arguments");
  const MorvikData& instance = currentInstance(isolate);
  if (!instance.interactiveID) return throwText(isolate, "Must be in interactive mode");
  g_debug("stop interactiveMode: %s", instance.interactiveID->c_str());
  const auto message = newZephMsg(nullptr);
  message->set_interactiveid(*instance.interactiveID);
  message->mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  sendZephMsg(instance.socket, *message);
}

void interactiveModeStopped() {
  g_warning("interactive mode stopped, autokill in %dms", kStopAutokillMs);
  g_timeout_add(kStopAutokillMs, stopAutokillCallback, nullptr);
}

gboolean stopAutokillCallback(gpointer /*unused*/) {
  g_warning("interactive mode stopped, autokill");
  std::exit(0);
}

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
