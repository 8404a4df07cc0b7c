// Looking up a service's object, which the script may have replaced.
#include "web/social-account.h"

#include "host/script.h"

namespace morvik {
namespace {

v8::MaybeLocal<v8::Object> child(v8::Local<v8::Context> context, v8::Local<v8::Object> parent,
                                 std::string_view name) {
  v8::Local<v8::Value> value;
  if (!parent->Get(context, toScript(name)).ToLocal(&value)) return {};
  return value->ToObject(context);
}

}  // namespace

v8::MaybeLocal<v8::Object> socialAccount(v8::Isolate* isolate, std::string_view service) {
  const v8::Local<v8::Context> context = isolate->GetCurrentContext();
  v8::Local<v8::Object> social;
  if (!child(context, context->Global(), "social").ToLocal(&social)) return {};
  return child(context, social, service);
}

}  // namespace morvik
