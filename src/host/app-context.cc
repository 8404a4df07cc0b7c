// An application's context in two steps: what is the same for all, made in the launcher, and what
// the descriptor grants to one.
#include "host/app-context.h"

#include "host/engine.h"

namespace morvik {
namespace {

// Functions get the names of their places as the template is followed, so an object of its own is
// made from it first. What the descriptor does not grant is never made at all.
void furnish(v8::Local<v8::Context> context, v8::Local<v8::ObjectTemplate> globals) {
  const v8::Context::Scope entered(context);
  const auto made = globals->NewInstance(context).ToLocalChecked();
  const auto names = made->GetOwnPropertyNames(context).ToLocalChecked();
  for (std::uint32_t i = 0; i < names->Length(); ++i) {
    const auto name = names->Get(context, i).ToLocalChecked().As<v8::Name>();
    const auto value = made->Get(context, name).ToLocalChecked();
    context->Global()->CreateDataProperty(context, name, value).Check();
  }
}

}  // namespace

v8::Local<v8::Context> newBareContext() {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto global = v8::ObjectTemplate::New(isolate);
  global->SetInternalFieldCount(1);
  return v8::Context::New(isolate, nullptr, global);
}

v8::Local<v8::Context> newAppContext(v8::Local<v8::ObjectTemplate> globals) {
  v8::Local<v8::Context> context;
  if (!Engine::takeContext().ToLocal(&context)) context = newBareContext();
  furnish(context, globals);
  return context;
}

}  // namespace morvik
