// The engine's set-up, with the flags that the host sets.
#include "check/script-engine.h"

#include <glib.h>
#include <libplatform/libplatform.h>
#include <v8.h>

#include <string_view>

#include <nlohmann/json.hpp>

#include "api/toolbox-files.h"

namespace morvik::devkit {
namespace {

constexpr const char* kFlags = "--single-threaded --no-expose-wasm";

// In the order in which each needs those before it.
constexpr const char* kRules[] = {"engine-names.js", "acorn.js",  "texts.js",
                                  "program.js",      "folder.js", "calls.js",
                                  "callbacks.js",    "names.js",  "check.js"};

// For the process: the engine cannot be set up twice.
v8::Platform* startEngineForLife() {
  v8::V8::SetFlagsFromString(kFlags);
  v8::Platform* platform = v8::platform::NewSingleThreadedDefaultPlatform().release();
  v8::V8::InitializePlatform(platform);
  v8::V8::Initialize();
  return platform;
}

v8::Local<v8::String> engineText(v8::Isolate* isolate, std::string_view text) {
  return v8::String::NewFromUtf8(isolate, text.data(), v8::NewStringType::kNormal,
                                 static_cast<int>(text.size()))
      .ToLocalChecked();
}

std::string utf8Of(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  const v8::String::Utf8Value text(isolate, value);
  return *text != nullptr ? std::string(*text, static_cast<std::size_t>(text.length())) : "";
}

// As the host's log has it.
std::string withoutPrefix(const std::string& text) {
  constexpr std::string_view kPrefix = "Uncaught ";
  return text.starts_with(kPrefix) ? text.substr(kPrefix.size()) : text;
}

SyntaxError errorOf(v8::Isolate* isolate, v8::Local<v8::Context> context,
                    const v8::TryCatch& caught) {
  const v8::Local<v8::Message> message = caught.Message();
  if (message.IsEmpty()) return {"cannot be compiled", 0, 0};
  return {withoutPrefix(utf8Of(isolate, message->Get())),
          message->GetLineNumber(context).FromMaybe(0),
          message->GetStartColumn(context).FromMaybe(-1) + 1};
}

}  // namespace

class ScriptEngine::Impl {
 public:
  Impl() : allocator_(v8::ArrayBuffer::Allocator::NewDefaultAllocator()) {
    static const v8::Platform* const platform = startEngineForLife();
    static_cast<void>(platform);
    v8::Isolate::CreateParams params;
    params.array_buffer_allocator = allocator_.get();
    isolate_ = v8::Isolate::New(params);
  }
  ~Impl() {
    context_.Reset();
    isolate_->Dispose();
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  std::optional<SyntaxError> compile(const std::string& name, const std::string& source) {
    const v8::Isolate::Scope isolateScope(isolate_);
    const v8::HandleScope handles(isolate_);
    const v8::Local<v8::Context> context = v8::Context::New(isolate_);
    const v8::Context::Scope entered(context);
    const v8::TryCatch caught(isolate_);
    const v8::ScriptOrigin origin(isolate_, engineText(isolate_, name));
    v8::ScriptCompiler::Source text(engineText(isolate_, source), origin);
    if (!v8::ScriptCompiler::CompileUnboundScript(isolate_, &text).IsEmpty()) return std::nullopt;
    return errorOf(isolate_, context, caught);
  }

  Json call(const char* function, const Json& input) {
    const v8::Isolate::Scope isolateScope(isolate_);
    const v8::HandleScope handles(isolate_);
    if (context_.IsEmpty()) loadRules();
    const v8::Local<v8::Context> context = context_.Get(isolate_);
    const v8::Context::Scope entered(context);
    const v8::TryCatch caught(isolate_);
    const auto rule = evaluate(context, function, function).As<v8::Function>();
    v8::Local<v8::Value> argument = engineText(isolate_, textOf(input));
    v8::Local<v8::Value> result;
    if (!rule->Call(context, v8::Undefined(isolate_), 1, &argument).ToLocal(&result))
      refuse(context, caught);
    return Json::parse(utf8Of(isolate_, result));
  }

 private:
  void loadRules() {
    context_.Reset(isolate_, v8::Context::New(isolate_));
    const v8::Local<v8::Context> context = context_.Get(isolate_);
    const v8::Context::Scope entered(context);
    for (const char* name : kRules)
      evaluate(context, name, toolboxFile(std::string("devkit/check/script/") + name));
  }

  v8::Local<v8::Value> evaluate(v8::Local<v8::Context> context, const char* name,
                                std::string_view source) {
    v8::EscapableHandleScope handles(isolate_);
    const v8::TryCatch caught(isolate_);
    v8::ScriptOrigin origin(isolate_, engineText(isolate_, name));
    v8::Local<v8::Script> script;
    v8::Local<v8::Value> value;
    const bool done =
        v8::Script::Compile(context, engineText(isolate_, source), &origin).ToLocal(&script) &&
        script->Run(context).ToLocal(&value);
    if (!done) refuse(context, caught);
    return handles.Escape(value);
  }

  // The rules are this program's own, and a failure in them is its own mistake.
  [[noreturn]] void refuse(v8::Local<v8::Context> context, const v8::TryCatch& caught) {
    const SyntaxError error = errorOf(isolate_, context, caught);
    const std::string file = utf8Of(isolate_, caught.Message()->GetScriptOrigin().ResourceName());
    g_error("the rules of check failed: %s:%d: %s", file.c_str(), error.line, error.text.c_str());
  }

  std::unique_ptr<v8::ArrayBuffer::Allocator> allocator_;
  v8::Isolate* isolate_ = nullptr;
  v8::Global<v8::Context> context_;
};

ScriptEngine::ScriptEngine() : impl_(std::make_unique<Impl>()) {}

ScriptEngine::~ScriptEngine() = default;

std::optional<SyntaxError> ScriptEngine::compile(const std::string& name,
                                                 const std::string& source) {
  return impl_->compile(name, source);
}

Json ScriptEngine::call(const char* function, const Json& input) {
  return impl_->call(function, input);
}

}  // namespace morvik::devkit
