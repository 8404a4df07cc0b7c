// From script into the program and back, and from the main loop into script.
#include <benchmark/benchmark.h>
#include <glib.h>

#include "host/engine.h"
#include "host/script.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)

// An isolate, a context, and a script function made from source.
class Script {
 public:
  explicit Script(const char* source)
      : handles_(v8::Isolate::GetCurrent()),
        context_(v8::Context::New(v8::Isolate::GetCurrent())),
        entered_(context_) {
    const auto native = v8::Function::New(context_, [](const Args& args) {
                          benchmark::DoNotOptimize(asciiText(args.GetIsolate(), args[0]));
                        }).ToLocalChecked();
    context_->Global()->Set(context_, toScript("native"), native).Check();
    function_ = v8::Script::Compile(context_, toScript(source))
                    .ToLocalChecked()
                    ->Run(context_)
                    .ToLocalChecked()
                    .As<v8::Function>();
  }
  [[nodiscard]] ScriptFunction kept() const { return ScriptFunction(function_); }

 private:
  v8::HandleScope handles_;
  v8::Local<v8::Context> context_;
  v8::Context::Scope entered_;
  v8::Local<v8::Function> function_;
};

void loopIntoScript(benchmark::State& state) {
  const Script script("(function() { return true; })");
  const ScriptFunction function = script.kept();
  for (auto _ : state) benchmark::DoNotOptimize(function.call());
}
BENCHMARK(loopIntoScript);

void scriptIntoProgramThousandTimes(benchmark::State& state) {
  const Script script("(function() { for (let i = 0; i < 1000; i++) native('red'); })");
  const ScriptFunction function = script.kept();
  for (auto _ : state) benchmark::DoNotOptimize(function.call());
}
BENCHMARK(scriptIntoProgramThousandTimes)->Unit(benchmark::kMicrosecond);

// What every reply that is an object costs beyond the call.
void temporaryContext(benchmark::State& state) {
  const Script script("(function() {})");
  for (auto _ : state) {
    const TemporaryContext temporary;
    benchmark::DoNotOptimize(temporary.newObject());
  }
}
BENCHMARK(temporaryContext)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  Engine::prepare();
  const Engine engine;
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
