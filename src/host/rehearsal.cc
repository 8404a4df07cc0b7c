// A start of an application on trial, before there is any.
#include "host/rehearsal.h"

#include <glib.h>
#include <libxml/parser.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>
#include <v8.h>
#include <zeph-message.pb.h>

#include <cstdint>
#include <string>

#include "host/app-context.h"
#include "host/descriptor.h"
#include "host/globals.h"
#include "host/morvik-data.h"
#include "host/object-tree.h"
#include "host/script.h"
#include "host/uuid.h"

namespace morvik {
namespace {

// What most scripts do before they wait: functions, objects, texts, and an exception that is
// caught.
constexpr const char* kScript =
    "(function() {"
    "  var kept = {list: [1, 2, 3], text: 'a' + String(1.5)};"
    "  function each(f) { for (var i = 0; i < kept.list.length; ++i) f(kept.list[i]); }"
    "  each(function(n) { kept.text += n; });"
    "  try { throw new Error(kept.text); } catch (e) { kept.text = e.message; }"
    "  return JSON.stringify(kept);"
    "})();";

// Pages that the linker has read come back from the system's cache where they are needed. What is
// never written has no content of its own.
int dropUnwritten(dl_phdr_info* object, std::size_t /*size*/, void* /*unused*/) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = object->dlpi_phdr[i];
    if (part.p_type != PT_LOAD || (part.p_flags & PF_W) != 0) continue;
    const std::uintptr_t begin = (object->dlpi_addr + part.p_vaddr) / page * page;
    const std::uintptr_t end = object->dlpi_addr + part.p_vaddr + part.p_memsz;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the linker tells addresses as numbers.
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
  }
  return 0;
}

// One that grants everything.
Descriptor fullDescriptor() {
  std::string text = "<descriptor><accesses>";
  for (const std::string& name : gatedNames()) text += "<access>" + name + "</access>";
  text += "</accesses></descriptor>";
  Descriptor descriptor;
  descriptor.doc.reset(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0));
  descriptor.accesses = findAccesses(descriptor.doc.get());
  return descriptor;
}

v8::Local<v8::ObjectTemplate> globals() {
  const auto global = buildGlobalTemplate();
  const auto morvik = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  buildDeviceTree(global, morvik, fullDescriptor());
  addMorvikFunctions(morvik);
  addGlobals(global, morvik, MorvikData());
  return global;
}

void runScript() {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  const auto context = newAppContext(globals());
  const v8::Context::Scope entered(context);
  v8::ScriptOrigin origin(isolate, toScript("main.js"));
  v8::Local<v8::Script> script;
  if (!v8::Script::Compile(context, toScript(kScript), &origin).ToLocal(&script)) return;
  [[maybe_unused]] const auto ignored = script->Run(context);
}

void passMessage() {
  zeph::ZephMsg sent;
  sent.set_id("id");
  sent.set_correlationid("id");
  sent.mutable_response()->set_code(zeph::OK);
  sent.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  zeph::ZephMsg received;
  received.ParsePartialFromString(sent.SerializePartialAsString());
  received.DebugString();
}

// A loop of its own: the usual one has a descriptor that no two processes may share.
void runLoop() {
  GMainContext* context = g_main_context_new();
  GMainLoop* loop = g_main_loop_new(context, FALSE);
  GSource* timer = g_timeout_source_new(0);
  g_source_set_callback(
      timer,
      [](gpointer running) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(running));
        return G_SOURCE_REMOVE;
      },
      loop, nullptr);
  g_source_attach(timer, context);
  g_main_loop_run(loop);
  g_source_unref(timer);
  g_main_loop_unref(loop);
  g_main_context_unref(context);
}

}  // namespace

v8::Local<v8::Context> rehearse() {
  dl_iterate_phdr(dropUnwritten, nullptr);
  newUuid();
  runLoop();
  runScript();
  passMessage();
  return newBareContext();
}

}  // namespace morvik
