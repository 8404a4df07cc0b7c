// Hidden values are kept under private symbols of the engine: no key that a script can get hold of
// leads to them, neither by listing nor through a Proxy.
#include "web/hidden-value.h"

#include "host/script.h"

namespace morvik {
namespace {

// From the engine's own registry: the same name gives the same symbol at each call.
v8::Local<v8::Private> keyFor(std::string_view name) {
  return v8::Private::ForApi(v8::Isolate::GetCurrent(), toScript(name));
}

v8::Local<v8::Context> currentContext() { return v8::Isolate::GetCurrent()->GetCurrentContext(); }

}  // namespace

void setHidden(v8::Local<v8::Object> object, std::string_view name, v8::Local<v8::Value> value) {
  object->SetPrivate(currentContext(), keyFor(name), value).Check();
}

v8::Local<v8::Value> hidden(v8::Local<v8::Object> object, std::string_view name) {
  return object->GetPrivate(currentContext(), keyFor(name)).ToLocalChecked();
}

}  // namespace morvik
