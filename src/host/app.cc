// An application's start in its exact order, its main loop and its end.
#include "host/app.h"

#include <v8.h>

#include <cstdlib>
#include <ctime>

#include "host/app-context.h"
#include "host/app-path.h"
#include "host/descriptor.h"
#include "host/engine.h"
#include "host/exceptions.h"
#include "host/globals.h"
#include "host/morvik-data.h"
#include "host/object-tree.h"
#include "host/parameters.h"
#include "host/script.h"
#include "host/source.h"

namespace morvik {
namespace {

// The script's whole world, in the order that a reader of the log knows. What the descriptor does
// not grant is not there at all, so no test stands between a script and its functions later. Each
// application seeds the numbers of `morvik.random` anew: two that start within one second draw the
// same ones.
v8::Local<v8::ObjectTemplate> buildGlobals(MorvikData& instance) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto global = buildGlobalTemplate();
  const auto morvik = v8::ObjectTemplate::New(isolate);
  auto descriptor = loadDescriptor(instance);
  g_message("decriptor loaded");
  buildDeviceTree(global, morvik, *descriptor);
  instance.descriptor = std::move(descriptor);
  addMorvikFunctions(morvik);
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  addGlobals(global, morvik, instance);
  return global;
}

// config.bin becomes `params`, an empty object where there is none: a script need not ask first.
void setParameters(v8::Local<v8::Context> context, const MorvikData& instance) {
  const auto params = loadParameters(appPath(instance, "config.bin", kStartPathSize));
  context->Global()->Set(context, toScript("params"), params).Check();
}

// Under the name that scripts and the log see in places and stacks, not under its path.
v8::MaybeLocal<v8::Script> compile(v8::Local<v8::Context> context, v8::Local<v8::String> source) {
  v8::ScriptOrigin origin(v8::Isolate::GetCurrent(), toScript("main.js"));
  return v8::Script::Compile(context, source, &origin);
}

// An application whose main.js fails lives on with whatever it has set up: a listener that it has
// added before goes on hearing. The TryCatch is verbose, so the engine tells of the exception as
// well, to a listener that leaves it to this report (onEngineMessage).
void runMain(v8::Local<v8::Context> context, const MorvikData& instance) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto source = loadSource(instance, "main.js");
  v8::TryCatch tryCatch(isolate);
  tryCatch.SetCaptureMessage(true);
  tryCatch.SetVerbose(true);
  v8::Local<v8::Script> script;
  if (!compile(context, source).ToLocal(&script)) {
    reportException(tryCatch);
    return;
  }
  g_message("running app: %s", instance.appName.c_str());
  if (script->Run(context).IsEmpty()) reportException(tryCatch);
}

}  // namespace

void startApp(MorvikData& instance) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const ScriptRun run(isolate);
  const auto context = newAppContext(buildGlobals(instance));
  const v8::Context::Scope entered(context);
  context->Global()->SetAlignedPointerInInternalField(0, &instance);
  setParameters(context, instance);
  runMain(context, instance);
}

// From within a callback: nothing behind the main loop runs any more, and the launcher sees status
// 255. An application that becomes interactive later than this, or leaves that mode, is not asked
// again.
gboolean autokillCallback(gpointer instance) {
  if (static_cast<MorvikData*>(instance)->interactiveID) return G_SOURCE_REMOVE;
  g_warning("/!\\ AUTOKILL, application still not interactive after %dms", kAutokillMs);
  std::exit(-1);
}

// The autokill counts from the end of the first run, so a long main.js has its ten seconds all the
// same, and one that never returns is never ended. A script's `exit()` during that run is lost,
// because the loop that it quits has not begun.
void runApp(MorvikData& instance) {
  instance.mainLoop = g_main_loop_new(nullptr, FALSE);
  g_debug("running app: %s/%s", instance.options->app_folder, instance.appName.c_str());
  {
    const Engine engine;
    startApp(instance);
    g_timeout_add(kAutokillMs, autokillCallback, &instance);
    g_main_loop_run(instance.mainLoop);
    releaseGlobals(instance);  // handles into the engine must go before it does
  }
  Engine::dispose();
  g_main_loop_unref(instance.mainLoop);
}

}  // namespace morvik
