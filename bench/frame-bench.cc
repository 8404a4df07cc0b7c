// One message to bytes and back: making it, its frame, its text for the log, reading it.
#include <benchmark/benchmark.h>

#include "channel/frame.h"
#include "channel/message.h"

namespace {

using morvik::newZephMsg;

std::unique_ptr<morvik::zeph::ZephMsg> lightRequest() {
  auto message = newZephMsg("3f0a0f5e-8a38-4f9e-b0a0-0a8a1f3d3a11");
  message->mutable_led()->mutable_light()->set_color("red");
  return message;
}

void makeMessage(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(lightRequest());
}
BENCHMARK(makeMessage);

void serialiseFrame(benchmark::State& state) {
  const auto message = lightRequest();
  for (auto _ : state) {
    std::string body = message->SerializeAsString();
    benchmark::DoNotOptimize(morvik::frameHeader(static_cast<std::uint32_t>(body.size())));
    benchmark::DoNotOptimize(body);
  }
}
BENCHMARK(serialiseFrame);

void parsePayload(benchmark::State& state) {
  const std::string body = lightRequest()->SerializeAsString();
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(body.data());
  for (auto _ : state) {
    morvik::zeph::ZephMsg message;
    morvik::parseZephMsg({bytes, body.size()}, message);
    benchmark::DoNotOptimize(message);
  }
}
BENCHMARK(parsePayload);

// Made for every frame in both directions, whatever the log's threshold is.
void textForTheLog(benchmark::State& state) {
  const auto message = lightRequest();
  for (auto _ : state) benchmark::DoNotOptimize(message->DebugString());
}
BENCHMARK(textForTheLog);

}  // namespace

BENCHMARK_MAIN();
