// log, exit, setTimeout, uuid, timestamp, random: what every script has without asking.
#include "host/globals.h"

#include <cstdlib>
#include <ctime>

#include "channel/callback-table.h"
#include "channel/script-functions.h"
#include "host/launch-type.h"
#include "host/morvik-data.h"
#include "host/resources.h"
#include "host/script.h"
#include "host/uuid.h"
#include "web/signing.h"

namespace morvik {
namespace {

constexpr int kRandomRange = 10000000;

// The one road from a script into the log; whatever the value, the line begins with JSLOG.
void log(const Args& args) {
  if (args.Length() != 1) return throwText(args.GetIsolate(), "Wrong arguments");
  if (const auto text = asciiText(args.GetIsolate(), args[0]))
    g_message("JSLOG: %s", text->c_str());
}

// The script runs on until it returns to the loop. Before the loop runs, this has no effect. The
// log has its line also for a call that is refused.
void exit(const Args& args) {
  g_debug("EXIT");
  if (args.Length() != 0) return throwText(args.GetIsolate(), "Wrong arguments");
  g_main_loop_quit(currentInstance(args.GetIsolate()).mainLoop);
}

void releaseTimer(gpointer holder) { delete static_cast<ScriptFunction*>(holder); }

// No function cancels a timer, so GLib's number for it is not kept.
void setTimeout(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (args.Length() != 2 || !args[0]->IsNumber() || !args[1]->IsFunction()) {
    return throwText(isolate, "Must be setTimeout(int,function)");
  }
  auto* holder = new ScriptFunction(args[1].As<v8::Function>());
  const std::int32_t ms = args[0]->Int32Value(isolate->GetCurrentContext()).FromJust();
  g_debug("SetTimeout: %d", ms);
  // A negative number becomes an interval of weeks, as GLib counts without a sign.
  g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(ms), timerFired, holder, releaseTimer);
}

void random(const Args& args) {
  const int number = std::rand() % kRandomRange;
  g_debug("rand : %d", number);
  args.GetReturnValue().Set(number);
}

void uuid(const Args& args) { args.GetReturnValue().Set(toScript(newUuid())); }

// A text, where a number would be expected: a script that adds 1 to it gets one digit more.
void timestamp(const Args& args) {
  args.GetReturnValue().Set(toScript(std::to_string(std::time(nullptr))));
}

// `ping` stands on the global object and on `morvik`, and is the same function.
constexpr Binding kFirstFunctions[] = {
    {"log", log}, {"exit", exit}, {"setTimeout", setTimeout}, {"ping", ping}};
constexpr Binding kMorvikFunctions[] = {{"ping", ping},   {"info", info}, {"connect", connect},
                                        {"start", start}, {"stop", stop}, {"random", random}};
constexpr Binding kLaterFunctions[] = {
    {"include", include}, {"signHMACSHA1", signHMACSHA1}, {"uuid", uuid}, {"timestamp", timestamp}};

}  // namespace

gboolean timerFired(gpointer holder) {
  return static_cast<const ScriptFunction*>(holder)->call() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

v8::Local<v8::ObjectTemplate> buildGlobalTemplate() {
  const auto global = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  bind(global, kFirstFunctions);
  global->SetInternalFieldCount(1);
  return global;
}

void addMorvikFunctions(v8::Local<v8::ObjectTemplate> morvik) { bind(morvik, kMorvikFunctions); }

// The words of the launch line are copies. A script that changes them changes what its own code
// reads, and no path or permission of the host's.
void addGlobals(v8::Local<v8::ObjectTemplate> global, v8::Local<v8::ObjectTemplate> morvik,
                const MorvikData& instance) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  bind(global, kLaterFunctions);
  global->Set(isolate, "morvik", morvik);
  const auto file = v8::ObjectTemplate::New(isolate);
  bind(file, fileFunctions());
  global->Set(isolate, "file", file);
  global->Set(isolate, "cmdline", toScript(instance.cmdline));
  global->Set(isolate, "instanceName", toScript(instance.instanceName));
  global->Set(isolate, "appName", toScript(instance.appName));
  const auto launchType = v8::ObjectTemplate::New(isolate);
  buildLaunchType(launchType, instance.launchType);
  global->Set(isolate, "launchType", launchType);
}

void releaseGlobals(MorvikData& instance) {
  instance.releaseListeners();
  releaseCallbacks();
}

}  // namespace morvik
