// Scripts that are compiled, and the rules that are called.
#include "check/script-engine.h"

#include <glib.h>

#include <string_view>

#include <nlohmann/json.hpp>

#include "api/toolbox-files.h"
#include "check/engine.h"

namespace morvik::devkit {
namespace {

// In the order in which each needs those before it.
constexpr const char* kRules[] = {"engine-names.js", "acorn.js",  "texts.js",
                                  "program.js",      "folder.js", "calls.js",
                                  "callbacks.js",    "names.js",  "check.js"};

}  // namespace

class ScriptEngine::Impl {
 public:
  Impl() = default;
  ~Impl() { context_.Reset(); }
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
    return syntaxErrorOf(isolate_, context, caught);
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
    const SyntaxError error = syntaxErrorOf(isolate_, context, caught);
    const std::string file = utf8Of(isolate_, caught.Message()->GetScriptOrigin().ResourceName());
    g_error("the rules of check failed: %s:%d: %s", file.c_str(), error.line, error.text.c_str());
  }

  const EngineIsolate owned_;
  v8::Isolate* const isolate_ = owned_.get();
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
