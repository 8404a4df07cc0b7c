// What a script's calls and a device's events cost an application, all but the daemon of the log:
// a request that hears nothing, a round trip, an event as a text and one as an object.
#include <benchmark/benchmark.h>
#include <glib.h>

#include "host/engine.h"
#include "host/rehearsal.h"
#include "support/whole/whole-application.h"

namespace {

using namespace morvik;        // NOLINT(google-build-using-namespace)
using namespace morvik::test;  // NOLINT(google-build-using-namespace)

WholeApplication& appKeptForLife() {
  static auto& app = *[] {
    auto* made = new WholeApplication;
    made->run(
        "function light() { morvik.led.light('red'); }"
        "function nothing() {} function pinged() { ping(nothing); }"
        "morvik.button.addListener(function(type) { return true; });"
        "morvik.rfid.addListener(function(tag) { return true; });");
    return made;
  }();
  return app;
}

void request(benchmark::State& state) {
  WholeApplication& app = appKeptForLife();
  const ScriptFunction light = app.function("light");
  for (auto _ : state) {
    light.call();
    benchmark::DoNotOptimize(app.sent());
  }
}
BENCHMARK(request);

void roundTrip(benchmark::State& state) {
  WholeApplication& app = appKeptForLife();
  const ScriptFunction pinged = app.function("pinged");
  for (auto _ : state) {
    pinged.call();
    zeph::ZephMsg reply = deviceMessage();
    reply.set_correlationid(app.sent().id());
    reply.mutable_response()->set_code(zeph::OK);
    app.hear(reply);
  }
}
BENCHMARK(roundTrip);

void buttonEvent(benchmark::State& state) {
  WholeApplication& app = appKeptForLife();
  zeph::ZephMsg button = deviceMessage();
  button.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  for (auto _ : state) app.hear(button);
}
BENCHMARK(buttonEvent);

void hearTags(benchmark::State& state, bool rests) {
  WholeApplication& app = appKeptForLife();
  zeph::ZephMsg tag = deviceMessage();
  tag.mutable_rfidcallback()->set_id("d0021a053b463984");
  for (auto _ : state) {
    app.hear(tag);
    if (!rests) continue;
    state.PauseTiming();
    app.rest();
    state.ResumeTiming();
  }
}

// One behind the other.
void tagEvent(benchmark::State& state) { hearTags(state, /*rests=*/false); }
BENCHMARK(tagEvent)->Unit(benchmark::kMicrosecond);

// With a moment of rest between them, as where a person lays them down.
void singleTagEvent(benchmark::State& state) { hearTags(state, /*rests=*/true); }
BENCHMARK(singleTagEvent)->Unit(benchmark::kMicrosecond)->Iterations(500);

}  // namespace

int main(int argc, char** argv) {
  // Not measured: the C library would give the lines to the console where no daemon listens.
  g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  Engine::prepare(rehearse);
  const Engine engine;
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
