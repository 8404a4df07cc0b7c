// One set-up for the process, and conversions.
#include "check/engine.h"

#include <libplatform/libplatform.h>

namespace morvik::devkit {
namespace {

constexpr const char* kFlags = "--single-threaded --no-expose-wasm";

// For the process: the engine cannot be set up twice.
v8::Platform* startEngineForLife() {
  v8::V8::SetFlagsFromString(kFlags);
  v8::Platform* platform = v8::platform::NewSingleThreadedDefaultPlatform().release();
  v8::V8::InitializePlatform(platform);
  v8::V8::Initialize();
  return platform;
}

// As the host's log has it.
std::string withoutPrefix(const std::string& text) {
  constexpr std::string_view kPrefix = "Uncaught ";
  return text.starts_with(kPrefix) ? text.substr(kPrefix.size()) : text;
}

v8::Isolate* newIsolate(v8::ArrayBuffer::Allocator* allocator) {
  static const v8::Platform* const platform = startEngineForLife();
  static_cast<void>(platform);
  v8::Isolate::CreateParams params;
  params.array_buffer_allocator = allocator;
  return v8::Isolate::New(params);
}

}  // namespace

EngineIsolate::EngineIsolate()
    : allocator_(v8::ArrayBuffer::Allocator::NewDefaultAllocator()),
      isolate_(newIsolate(allocator_.get())) {}

v8::Local<v8::String> engineText(v8::Isolate* isolate, std::string_view text) {
  return v8::String::NewFromUtf8(isolate, text.data(), v8::NewStringType::kNormal,
                                 static_cast<int>(text.size()))
      .ToLocalChecked();
}

std::string utf8Of(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  const v8::String::Utf8Value text(isolate, value);
  return *text != nullptr ? std::string(*text, static_cast<std::size_t>(text.length())) : "";
}

SyntaxError syntaxErrorOf(v8::Isolate* isolate, v8::Local<v8::Context> context,
                          const v8::TryCatch& caught) {
  const v8::Local<v8::Message> message = caught.Message();
  if (message.IsEmpty()) return {"cannot be compiled", 0, 0};
  return {withoutPrefix(utf8Of(isolate, message->Get())),
          message->GetLineNumber(context).FromMaybe(0),
          message->GetStartColumn(context).FromMaybe(-1) + 1};
}

}  // namespace morvik::devkit
