// Finding the reply function of a message among many that wait, and registering one more.
#include <benchmark/benchmark.h>
#include <glib.h>

#include "channel/callback-table.h"
#include "channel/message.h"
#include "host/uuid.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)

void nothing(void* /*data*/, const zeph::ZephMsg& /*message*/) {}

std::shared_ptr<CallbackEntry> newEntry() {
  auto entry = std::make_shared<CallbackEntry>();
  entry->function = nothing;
  return entry;
}

void fillTable(std::int64_t entries) {
  releaseCallbacks();
  for (std::int64_t i = 0; i < entries; ++i) registerCallback(newUuid(), newEntry());
}

void findReply(benchmark::State& state) {
  fillTable(state.range(0));
  zeph::ZephMsg message;
  message.set_correlationid(newUuid());
  registerCallback(message.correlationid(), newEntry());
  for (auto _ : state) benchmark::DoNotOptimize(findCallback(message));
}
BENCHMARK(findReply)->Arg(10)->Arg(10000);

// Looks at every entry each time; the one id is replaced, so that the table keeps its size.
void registerReply(benchmark::State& state) {
  fillTable(state.range(0));
  const std::string id = newUuid();
  for (auto _ : state) registerCallback(id, newEntry());
}
BENCHMARK(registerReply)->Arg(10)->Arg(1000)->Arg(10000);

}  // namespace

BENCHMARK_MAIN();
