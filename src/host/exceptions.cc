// The report of an exception in the log, by whichever way it comes here.
#include "host/exceptions.h"

#include <glib.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace morvik {
namespace {

// A promise that was rejected while nobody handled it.
struct Rejection {
  v8::Global<v8::Promise> promise;
  v8::Global<v8::Message> message;
};

std::vector<Rejection>& rejectionsKeptForLife() {
  static auto& rejections = *new std::vector<Rejection>;
  return rejections;
}

// True while the engine runs script of its own accord, outside every TryCatch of ours.
bool engineRunsScript = false;

// A value that has no text, such as a symbol or an object whose toString throws, must not take the
// report away from whoever looks for the place of the failure.
std::string textOrApology(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  const v8::String::Utf8Value text(isolate, value);
  return *text != nullptr ? *text : "<string conversion failed>";
}

// Marks the columns of the failing expression below the source line, as a log in a fixed pitch
// shows it. A line of any length has room.
std::string underline(v8::Local<v8::Context> context, v8::Local<v8::Message> message) {
  const int start = std::max(message->GetStartColumn(context).FromMaybe(0), 0);
  const int end = std::max(message->GetEndColumn(context).FromMaybe(start), start);
  return std::string(static_cast<std::size_t>(start), ' ') +
         std::string(static_cast<std::size_t>(end - start), '^');
}

// Reading a stack may run script: what that throws is no part of the report.
void reportStack(v8::Isolate* isolate, v8::Local<v8::Value> exception) {
  const v8::TryCatch tryCatch(isolate);
  v8::Local<v8::Value> stack;
  if (!v8::TryCatch::StackTrace(isolate->GetCurrentContext(), exception).ToLocal(&stack)) return;
  if (stack->IsUndefined()) return;
  const std::string text = textOrApology(isolate, stack);
  if (!text.empty()) g_warning("%s", text.c_str());
}

// Each part is a record of its own. Only an exception that the engine knows no place for ends the
// process.
void report(v8::Isolate* isolate, v8::Local<v8::Value> exception, v8::Local<v8::Message> message) {
  const v8::Local<v8::Context> context = isolate->GetCurrentContext();
  const std::string text = textOrApology(isolate, exception);
  if (message.IsEmpty()) g_error("%s\n", text.c_str());
  const std::string resource = textOrApology(isolate, message->GetScriptOrigin().ResourceName());
  g_warning("%s:%i: %s", resource.c_str(), message->GetLineNumber(context).FromMaybe(0),
            text.c_str());
  v8::Local<v8::String> line;
  if (!message->GetSourceLine(context).ToLocal(&line)) line = v8::String::Empty(isolate);
  g_warning("%s", textOrApology(isolate, line).c_str());
  g_warning("%s", underline(context, message).c_str());
  reportStack(isolate, exception);
}

// In the promise's own context: turning the reason into a text may run its script.
void reportRejection(v8::Isolate* isolate, const Rejection& rejection) {
  const v8::Local<v8::Promise> promise = rejection.promise.Get(isolate);
  const v8::Context::Scope entered(promise->GetCreationContext().ToLocalChecked());
  report(isolate, promise->Result(), rejection.message.Get(isolate));
}

}  // namespace

EngineRunsScript::EngineRunsScript() { engineRunsScript = true; }

EngineRunsScript::~EngineRunsScript() { engineRunsScript = false; }

void reportException(const v8::TryCatch& tryCatch) {
  report(v8::Isolate::GetCurrent(), tryCatch.Exception(), tryCatch.Message());
}

// With a verbose TryCatch the engine tells here what reportException tells too; only where no
// TryCatch of ours stands is this the one report.
void onEngineMessage(v8::Local<v8::Message> message, v8::Local<v8::Value> exception) {
  if (engineRunsScript) report(v8::Isolate::GetCurrent(), exception, message);
}

// Told at the rejection, when a handler may still come in the same run of script; so nothing is
// reported before that run has ended.
void onPromiseReject(v8::PromiseRejectMessage rejection) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  std::vector<Rejection>& rejections = rejectionsKeptForLife();
  if (rejection.GetEvent() == v8::kPromiseRejectWithNoHandler) {
    const auto message = v8::Exception::CreateMessage(isolate, rejection.GetValue());
    rejections.push_back({v8::Global<v8::Promise>(isolate, rejection.GetPromise()),
                          v8::Global<v8::Message>(isolate, message)});
  } else if (rejection.GetEvent() == v8::kPromiseHandlerAddedAfterReject) {
    std::erase_if(rejections,
                  [&](const Rejection& entry) { return entry.promise == rejection.GetPromise(); });
  }
}

// Reporting turns values into text, which may run script and reject more promises: those wait for
// the next run, so that no script can keep this busy for ever.
void reportRejections(v8::Isolate* isolate) {
  const std::vector<Rejection> batch = std::exchange(rejectionsKeptForLife(), {});
  for (const Rejection& rejection : batch) reportRejection(isolate, rejection);
}

}  // namespace morvik
