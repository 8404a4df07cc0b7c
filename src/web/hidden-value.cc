// Hidden values are private symbols of the engine.
#include "web/hidden-value.h"

#include "host/script.h"

namespace morvik {
namespace {

// From the engine's own registry: the same name gives the same symbol at each call.
v8::Local<v8::Private> keyFor(std::string_view name) {
  return v8::Private::ForApi(v8::Isolate::GetCurrent(), toScript(name));
}

v8::Local<v8::Context> currentContext() { return v8::Isolate::GetCurrent()->GetCurrentContext(); }

v8::MaybeLocal<v8::Object> child(v8::Local<v8::Object> parent, std::string_view name) {
  v8::Local<v8::Value> value;
  if (!parent->Get(currentContext(), toScript(name)).ToLocal(&value)) return {};
  return value->ToObject(currentContext());
}

}  // namespace

void setHidden(v8::Local<v8::Object> object, std::string_view name, v8::Local<v8::Value> value) {
  object->SetPrivate(currentContext(), keyFor(name), value).Check();
}

v8::Local<v8::Value> hidden(v8::Local<v8::Object> object, std::string_view name) {
  return object->GetPrivate(currentContext(), keyFor(name)).ToLocalChecked();
}

v8::MaybeLocal<v8::Object> socialAccount(v8::Isolate* isolate, std::string_view service) {
  v8::Local<v8::Object> social;
  if (!child(isolate->GetCurrentContext()->Global(), "social").ToLocal(&social)) return {};
  return child(social, service);
}

}  // namespace morvik
