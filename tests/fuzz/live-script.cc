// The application is made at the first use, as the program makes it before its main loop.
#include "fuzz/live-script.h"

namespace morvik::test {

LiveScript& liveScriptKeptForLife() {
  static auto& live = *new LiveScript;
  return live;
}

std::string textOf(v8::Local<v8::Object> object, const char* property) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto value = object->Get(isolate->GetCurrentContext(), toScript(property)).ToLocalChecked();
  return utf8Text(isolate, value).value_or("");
}

v8::MaybeLocal<v8::Value> fromJson(std::string_view text) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::TryCatch noJson(isolate);
  return v8::JSON::Parse(isolate->GetCurrentContext(), toScript(text));
}

}  // namespace morvik::test
