// The engine around a test's script. Everything that a script finds is in script/*.js; here are
// lines in, lines out, and the promises that failed while nobody waited for them.
#include "test/script-runner.h"

#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <nlohmann/json.hpp>

#include "api/toolbox-files.h"
#include "check/engine.h"
#include "device/json.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

// In the order in which each needs those before it.
constexpr const char* kHarnessFiles[] = {"values.js", "places.js", "world.js", "expect.js",
                                         "runner.js"};
// What the engine calls them in places, which are none of the author's.
constexpr const char* kHarnessName = "morvik-dev test";

using Stream = std::unique_ptr<FILE, Release<fclose>>;

// One function around all, so that a script's own names cannot meet theirs.
std::string harnessSource() {
  std::string source = "(function (send, takeUnhandled, ownName) { 'use strict';\n";
  for (const char* name : kHarnessFiles) {
    source += toolboxFile(std::string("devkit/test/script/") + name);
  }
  return source + "return { receive, tellTests }; })";
}

class TestScript {
 public:
  explicit TestScript(int channel)
      : input_(fdopen(channel, "r")), output_(fdopen(dup(channel), "w")) {
    isolate_->SetData(0, this);
    isolate_->SetPromiseRejectCallback(onRejection);
  }
  TestScript(const TestScript&) = delete;
  TestScript& operator=(const TestScript&) = delete;

  void run(const std::string& file) {
    const v8::Isolate::Scope isolateScope(isolate_);
    const v8::HandleScope handles(isolate_);
    const auto context = v8::Context::New(isolate_);
    const v8::Context::Scope entered(context);
    const auto harness = makeHarness(context);
    load(context, harness, file);
    for (std::string line; readLine(line);) {
      const v8::HandleScope turn(isolate_);
      callHarness(context, harness, "receive", engineText(isolate_, line));
    }
  }

 private:
  struct Unhandled {
    v8::Global<v8::Promise> promise;
    v8::Global<v8::Value> reason;
  };

  static TestScript& of(v8::Isolate* isolate) {
    return *static_cast<TestScript*>(isolate->GetData(0));
  }

  v8::Local<v8::Object> makeHarness(v8::Local<v8::Context> context) {
    const auto make = evaluate(context, kHarnessName, harnessSource()).ToLocalChecked();
    v8::Local<v8::Value> arguments[] = {v8::Function::New(context, send).ToLocalChecked(),
                                        v8::Function::New(context, takeUnhandled).ToLocalChecked(),
                                        engineText(isolate_, kHarnessName)};
    return make.As<v8::Function>()
        ->Call(context, v8::Undefined(isolate_), std::size(arguments), arguments)
        .ToLocalChecked()
        .As<v8::Object>();
  }

  v8::MaybeLocal<v8::Value> evaluate(v8::Local<v8::Context> context, const std::string& name,
                                     const std::string& source) {
    v8::ScriptOrigin origin(isolate_, engineText(isolate_, name));
    v8::Local<v8::Script> script;
    if (!v8::Script::Compile(context, engineText(isolate_, source), &origin).ToLocal(&script)) {
      return {};
    }
    return script->Run(context);
  }

  void load(v8::Local<v8::Context> context, v8::Local<v8::Object> harness,
            const std::string& file) {
    GErrorOwned error;
    char* content = nullptr;
    gsize size = 0;
    if (g_file_get_contents(file.c_str(), &content, &size, error.out()) == FALSE) {
      return write(brokenBy({error.text(), 0, 0}, file));
    }
    const GText owned(content);
    const v8::TryCatch caught(isolate_);
    v8::Local<v8::Value> outcome = v8::Undefined(isolate_);
    if (evaluate(context, file, std::string(content, size)).IsEmpty()) {
      outcome = caught.Exception();
      if (outcome->IsNativeError() && wasNeverRun(context, outcome)) {
        return write(brokenBy(syntaxErrorOf(isolate_, context, caught), file));
      }
    }
    callHarness(context, harness, "tellTests", outcome);
  }

  // An error of the compiler has no place of the script's in its stack.
  bool wasNeverRun(v8::Local<v8::Context> context, v8::Local<v8::Value> error) {
    const auto name = error.As<v8::Object>()->Get(context, engineText(isolate_, "name"));
    v8::Local<v8::Value> text;
    return name.ToLocal(&text) && utf8Of(isolate_, text) == "SyntaxError";
  }

  static std::string brokenBy(const SyntaxError& error, const std::string& file) {
    Json place{{"file", file}, {"line", error.line}, {"column", error.column}};
    return textOf(
        {{"do", "broken"}, {"failure", {{"message", error.text}, {"place", std::move(place)}}}});
  }

  // The harness is this program's own, and a failure in it is its own mistake.
  void callHarness(v8::Local<v8::Context> context, v8::Local<v8::Object> harness, const char* name,
                   v8::Local<v8::Value> argument) {
    const v8::TryCatch caught(isolate_);
    const auto function = harness->Get(context, engineText(isolate_, name)).ToLocalChecked();
    if (!function.As<v8::Function>()
             ->Call(context, v8::Undefined(isolate_), 1, &argument)
             .IsEmpty()) {
      return;
    }
    const SyntaxError error = syntaxErrorOf(isolate_, context, caught);
    g_error("the harness of tests failed: line %d: %s", error.line, error.text.c_str());
  }

  static void send(const v8::FunctionCallbackInfo<v8::Value>& args) {
    of(args.GetIsolate()).write(utf8Of(args.GetIsolate(), args[0]));
  }

  static void takeUnhandled(const v8::FunctionCallbackInfo<v8::Value>& args) {
    v8::Isolate* isolate = args.GetIsolate();
    std::vector<v8::Local<v8::Value>> reasons;
    for (const Unhandled& one : std::exchange(of(isolate).unhandled_, {})) {
      reasons.push_back(one.reason.Get(isolate));
    }
    args.GetReturnValue().Set(v8::Array::New(isolate, reasons.data(), reasons.size()));
  }

  static void onRejection(v8::PromiseRejectMessage message) {
    const auto promise = message.GetPromise();
    v8::Isolate* isolate = promise->GetIsolate();
    auto& unhandled = of(isolate).unhandled_;
    if (message.GetEvent() == v8::kPromiseRejectWithNoHandler) {
      unhandled.push_back({v8::Global<v8::Promise>(isolate, promise),
                           v8::Global<v8::Value>(isolate, message.GetValue())});
    } else if (message.GetEvent() == v8::kPromiseHandlerAddedAfterReject) {
      std::erase_if(unhandled, [&](const Unhandled& one) { return one.promise == promise; });
    }
  }

  void write(const std::string& text) const {
    const bool written = std::fputs((text + '\n').c_str(), output_.get()) != EOF;
    if (!written || std::fflush(output_.get()) != 0) std::_Exit(EXIT_FAILURE);
  }

  // Of any length.
  bool readLine(std::string& line) const {
    char* bytes = nullptr;
    std::size_t capacity = 0;
    const ssize_t count = getline(&bytes, &capacity, input_.get());
    if (count > 0) line.assign(bytes, static_cast<std::size_t>(count));
    std::free(bytes);
    return count > 0;
  }

  const EngineIsolate owned_;
  v8::Isolate* const isolate_ = owned_.get();
  Stream input_;
  Stream output_;
  std::vector<Unhandled> unhandled_;
};

}  // namespace

int runTestScript(const std::string& file, int channel) {
  TestScript(channel).run(file);
  return EXIT_SUCCESS;
}

}  // namespace morvik::devkit
