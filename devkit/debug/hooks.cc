// The five places where the host meets the debugger.
//
// The linker leads the host's calls of these functions here (--wrap, see CMakeLists.txt), so that
// the host's own files hold nothing of a debugger and are the very ones of the program that ships.
// Three of the functions are the host's: each is called from another file than it stands in, at a
// moment that a debugger needs. One that is renamed or takes something else does not link any more.
// To stand in front of the engine's functions instead would catch the calls of other libraries too,
// and would show only when it runs that a name is another one.
#include "debug/hooks.h"

#include <sys/select.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

#include "debug/client-queue.h"
#include "debug/debug-server.h"
#include "debug/inspector.h"
#include "debug/paused-clock.h"
#include "host/app-path.h"
#include "host/exceptions.h"
#include "host/globals.h"
#include "host/launcher.h"
#include "host/morvik-data.h"
#include "host/source.h"

namespace morvik::devkit {

v8::Local<v8::String> realLoadSource(const MorvikData& instance, const char* file) asm(
    "__real__ZN6morvik10loadSourceERKNS_10MorvikDataEPKc");
v8::Local<v8::String> wrappedLoadSource(const MorvikData& instance, const char* file) asm(
    "__wrap__ZN6morvik10loadSourceERKNS_10MorvikDataEPKc");

void realReleaseGlobals(MorvikData& instance) asm(
    "__real__ZN6morvik14releaseGlobalsERNS_10MorvikDataE");
void wrappedReleaseGlobals(MorvikData& instance) asm(
    "__wrap__ZN6morvik14releaseGlobalsERNS_10MorvikDataE");

void realReportException(const v8::TryCatch& tryCatch) asm(
    "__real__ZN6morvik15reportExceptionERKN2v88TryCatchE");
void wrappedReportException(const v8::TryCatch& tryCatch) asm(
    "__wrap__ZN6morvik15reportExceptionERKN2v88TryCatchE");

v8::MaybeLocal<v8::Value>
realCall(v8::Function* function, v8::Local<v8::Context> context, v8::Local<v8::Value> receiver, int count, v8::Local<v8::Value>* arguments) asm(
    "__real__ZN2v88Function4CallENS_5LocalINS_"
    "7ContextEEENS1_INS_5ValueEEEiPS5_");
v8::MaybeLocal<v8::Value>
wrappedCall(v8::Function* function, v8::Local<v8::Context> context, v8::Local<v8::Value> receiver, int count, v8::Local<v8::Value>* arguments) asm(
    "__wrap__ZN2v88Function4CallENS_5LocalINS_"
    "7ContextEEENS1_INS_5ValueEEEiPS5_");

int realSelect(int count, fd_set* readable, fd_set* writable, fd_set* exceptional,
               timeval* timeout) asm("__real_select");
int wrappedSelect(int count, fd_set* readable, fd_set* writable, fd_set* exceptional,
                  timeval* timeout) asm("__wrap_select");

namespace {

namespace fs = std::filesystem;

// The launcher's options, and in a child the debugger of its application.
struct Debugging {
  InspectOptions options;
  bool isDue = false;
  ClientQueue queue;
  std::unique_ptr<DebugServer> server;
  std::unique_ptr<Inspector> inspector;
};

Debugging& debuggingKeptForLife() {
  static auto& debugging = *new Debugging;
  return debugging;
}

// The folder's true one: the name by which it is launched may be a link of a moment.
std::string folderAddressOf(const MorvikData& instance) {
  std::error_code error;
  const fs::path named = appPath(instance, "", kStartPathSize);
  const fs::path folder = fs::weakly_canonical(fs::absolute(named, error), error);
  const GText address(g_filename_to_uri(folder.c_str(), nullptr, nullptr));
  std::string text = address ? address.get() : "file://" + instance.appName;
  while (text.ends_with('/')) text.pop_back();
  return text;
}

void closeServer() { debuggingKeptForLife().server->close(); }

// Several applications of one launcher have ports one after the other.
bool startServer(Debugging& debugging, DebugTarget target) {
  auto server = std::make_unique<DebugServer>(std::move(target), debugging.queue);
  std::string trouble;
  if (!server->start(*debugging.options.port, kMaxApps, trouble)) {
    g_warning("debugger: none can attach: %s", trouble.c_str());
    return false;
  }
  g_message("debugger: listening on %s", socketAddressOf(server->target()).c_str());
  debugging.server = std::move(server);
  std::atexit(closeServer);
  return true;
}

// An application that no debugger can reach runs all the same.
void offerDebugger(Debugging& debugging, const MorvikData& instance) {
  const std::string folder = folderAddressOf(instance);
  const std::string& id = debugging.options.id;
  if (!startServer(debugging, {.id = id.empty() ? freshToken() : id,
                               .title = instance.appName,
                               .url = folder + "/main.js"})) {
    return;
  }
  startPausableClock();
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  debugging.inspector = std::make_unique<Inspector>(
      isolate, isolate->GetCurrentContext(), debugging.queue,
      [&debugging](std::string message) { debugging.server->send(std::move(message)); }, folder,
      instance.appName);
  if (debugging.options.breakFirst) debugging.inspector->waitForDebugger();
}

}  // namespace

// The host's log takes what any library says, and libsoup tells of every frame.
void setUpDebugging(const InspectOptions& options) {
  for (const char* library : {"libsoup", "GLib-GIO", "GLib-Net"}) {
    g_log_set_handler(
        library, G_LOG_LEVEL_DEBUG, [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {},
        nullptr);
  }
  debuggingKeptForLife().options = options;
  debuggingKeptForLife().isDue = options.port.has_value();
}

// The context is there and entered, and nothing has been compiled in it: the first source that is
// read is main.js. What is saved while the application waits for its debugger counts.
v8::Local<v8::String> wrappedLoadSource(const MorvikData& instance, const char* file) {
  Debugging& debugging = debuggingKeptForLife();
  if (std::exchange(debugging.isDue, false)) offerDebugger(debugging, instance);
  return realLoadSource(instance, file);
}

// The engine goes next.
void wrappedReleaseGlobals(MorvikData& instance) {
  debuggingKeptForLife().inspector.reset();
  realReleaseGlobals(instance);
}

// In the log as ever, and for the debugger's console.
void wrappedReportException(const v8::TryCatch& tryCatch) {
  const auto& inspector = debuggingKeptForLife().inspector;
  if (inspector) inspector->thrown(tryCatch);
  realReportException(tryCatch);
}

// The host catches what a callback throws, so that for the engine every exception there is caught,
// and a debugger that stops at uncaught ones passes over it. A verbose TryCatch between the two is
// what the engine takes for nobody.
v8::MaybeLocal<v8::Value> wrappedCall(v8::Function* function, v8::Local<v8::Context> context,
                                      v8::Local<v8::Value> receiver, int count,
                                      v8::Local<v8::Value>* arguments) {
  if (!debuggingKeptForLife().inspector) {
    return realCall(function, context, receiver, count, arguments);
  }
  v8::TryCatch tryCatch(context->GetIsolate());
  tryCatch.SetVerbose(true);
  const auto result = realCall(function, context, receiver, count, arguments);
  if (tryCatch.HasCaught()) tryCatch.ReThrow();
  return result;
}

// A CPU profile is taken by signals, and select is what no signal handler leaves waiting. The host
// takes its interruption for the end of the connection.
int wrappedSelect(int count, fd_set* readable, fd_set* writable, fd_set* exceptional,
                  timeval* timeout) {
  int ready = 0;
  do {
    ready = realSelect(count, readable, writable, exceptional, timeout);
  } while (ready == -1 && errno == EINTR);
  return ready;
}

}  // namespace morvik::devkit
