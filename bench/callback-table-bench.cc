// Registering an awaited reply among few and among a million others: nothing in it may depend on
// how many wait.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

#include "channel/callback-table.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)

void nothing(void* /*data*/, const zeph::ZephMsg& /*message*/) {}

// The form of a message's id, another one for each number.
std::string idOf(std::int64_t number) {
  std::array<char, 40> id{};
  std::snprintf(id.data(), id.size(), "%08x-0000-4000-8000-%012x",
                static_cast<unsigned>(number * 2654435761), static_cast<unsigned>(number));
  return id.data();
}

// So many requests, spread evenly over the ten hours that an entry lives.
class Requests {
 public:
  explicit Requests(std::int64_t count) : count_(count) {
    releaseCallbacks();
    while (sent_ < count) send();
  }
  ~Requests() { releaseCallbacks(); }
  Requests(const Requests&) = delete;
  Requests& operator=(const Requests&) = delete;

  void send() {
    registerCallback(idOf(sent_), awaiting(nothing, nullptr), now());
    ++sent_;
  }
  [[nodiscard]] std::time_t now() const { return sent_ * kMaxEntryAge / count_; }

 private:
  std::int64_t count_;
  std::int64_t sent_ = 0;
};

// The one id is replaced, so that the table keeps its size and no time passes.
void nothingIsOld(benchmark::State& state) {
  const Requests requests(state.range(0));
  const std::string id = idOf(-1);
  for (auto _ : state) registerCallback(id, awaiting(nothing, nullptr), requests.now());
}
BENCHMARK(nothingIsOld)->Arg(10)->Arg(10000)->Arg(1000000);

// The daily state of a long-lived application: with each request that comes, an old one goes.
void oneLeavesForEach(benchmark::State& state) {
  Requests requests(state.range(0));
  for (auto _ : state) requests.send();
}
BENCHMARK(oneLeavesForEach)->Arg(10)->Arg(10000)->Arg(1000000);

}  // namespace

BENCHMARK_MAIN();
