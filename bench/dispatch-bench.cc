// Finding the reply function of a message among many that wait.
#include <benchmark/benchmark.h>
#include <glib.h>

#include "channel/callback-table.h"
#include "channel/message.h"
#include "host/uuid.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)

void nothing(void* /*data*/, const zeph::ZephMsg& /*message*/) {}

void fillTable(std::int64_t entries) {
  releaseCallbacks();
  for (std::int64_t i = 0; i < entries; ++i)
    registerCallback(newUuid(), awaiting(nothing, nullptr));
}

void findReply(benchmark::State& state) {
  fillTable(state.range(0));
  zeph::ZephMsg message;
  message.set_correlationid(newUuid());
  registerCallback(message.correlationid(), awaiting(nothing, nullptr));
  for (auto _ : state) benchmark::DoNotOptimize(findCallback(message));
}
BENCHMARK(findReply)->Arg(10)->Arg(10000);

}  // namespace

BENCHMARK_MAIN();
