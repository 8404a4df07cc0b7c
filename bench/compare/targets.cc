#include "compare/targets.h"

#include <algorithm>
#include <functional>
#include <initializer_list>

namespace morvik::bench {
namespace {

using Value = std::optional<double>;

struct Target {
  const char* text;
  bool atMost;
  double limit;
  std::function<Value(const Results&)> value;
};

constexpr double kFlat = 1.10;

auto of(const char* row, const char* other) {
  return [=](const Results& results) { return results.ratio(row, kHost, other); };
}

auto itself(const char* row) {
  return [=](const Results& results) { return results.value(row, kHost); };
}

// One row of ours as a share of another one.
auto share(const char* row, const char* of) {
  return [=](const Results& results) -> Value {
    const Value part = results.value(row, kHost);
    const Value whole = results.value(of, kHost);
    if (!part || !whole || *whole == 0) return std::nullopt;
    return *part / *whole;
  };
}

// The largest of the rows as a multiple of the smallest.
auto spread(std::vector<const char*> rows) {
  return [rows = std::move(rows)](const Results& results) -> Value {
    std::vector<double> values;
    for (const char* row : rows) {
      const Value value = results.value(row, kHost);
      if (!value) return std::nullopt;
      values.push_back(*value);
    }
    const auto [least, most] = std::ranges::minmax(values);
    return least > 0 ? Value(most / least) : std::nullopt;
  };
}

const std::vector<Target>& targets() {
  static const std::vector<Target> kTargets = {
      {"launch to the first line, of Node.js", true, 1.0 / 25, of("launch.first", "node")},
      {"launch to interactive, of Node.js", true, 1.0 / 20, of("launch.interactive", "node")},
      {"private memory, of Node.js", true, 1.0 / 25, of("memory.private", "node")},
      {"three applications and the launcher, MiB", true, 24, itself("memory.three")},
      {"round trip p50, of Node.js", true, 1, of("trip.p50", "node")},
      {"round trip p99, of Node.js", true, 1, of("trip.p99", "node")},
      {"round trip p50, of no engine", true, 1.6, of("trip.p50", "floor")},
      {"round trip p99, of no engine", true, 1.6, of("trip.p99", "floor")},
      {"button events, of Node.js with duties", false, 1.5, of("button.rate", "node-duties")},
      {"LED requests, of Node.js with duties", false, 1.5, of("led.rate", "node-duties")},
      {"tag events, of what contexts alone allow", false, 0.9,
       share("tag.cpu-rate", "context.rate")},
      {"a single tag at p50, ms", true, 0.4, itself("tag.single")},
      {"round trip with 10 to 300,000 waiting, most of least", true, kFlat,
       spread({"table.trip.10", "table.trip.10000", "table.trip.300000"})},
      {"LED requests with 10 to 300,000 waiting, most of least", true, kFlat,
       spread({"table.led.10", "table.led.10000", "table.led.300000"})},
      {"memory that a request leaves behind, bytes", true, 1, itself("age.request")},
      {"round trip of an old application, of a young one", true, kFlat,
       share("age.trip.old", "age.trip.young")},
      {"launch of the last application, of the first", true, kFlat,
       share("age.launch.old", "age.launch.young")},
  };
  return kTargets;
}

}  // namespace

std::vector<Verdict> verdicts(const Results& results) {
  std::vector<Verdict> all;
  for (const Target& target : targets())
    all.push_back({target.text, target.atMost, target.limit, target.value(results)});
  return all;
}

}  // namespace morvik::bench
