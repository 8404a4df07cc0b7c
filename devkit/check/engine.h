// The script engine for the tool's own use: its set-up, and texts to and from it.
#pragma once

#include <v8.h>

#include <memory>
#include <string>
#include <string_view>

#include "check/syntax-error.h"

namespace morvik::devkit {

/// An isolate of its own, with the flags that the host sets. Handles into it must go before it
/// does.
class EngineIsolate {
 public:
  EngineIsolate();
  ~EngineIsolate() { isolate_->Dispose(); }
  EngineIsolate(const EngineIsolate&) = delete;
  EngineIsolate& operator=(const EngineIsolate&) = delete;

  v8::Isolate* get() const { return isolate_; }

 private:
  std::unique_ptr<v8::ArrayBuffer::Allocator> allocator_;
  v8::Isolate* isolate_;
};

v8::Local<v8::String> engineText(v8::Isolate* isolate, std::string_view text);
std::string utf8Of(v8::Isolate* isolate, v8::Local<v8::Value> value);

/// What was caught, with its place in the source.
SyntaxError syntaxErrorOf(v8::Isolate* isolate, v8::Local<v8::Context> context,
                          const v8::TryCatch& caught);

}  // namespace morvik::devkit
