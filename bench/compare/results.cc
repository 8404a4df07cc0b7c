#include "compare/results.h"

#include <algorithm>
#include <stdexcept>

namespace morvik::bench {
namespace {

constexpr Row kRows[] = {
    {"launch.first", "launch to the script's first line", "ms", false, true},
    {"launch.interactive", "launch to interactive", "ms", false, true},
    {"memory.private", "private memory, idle and interactive", "MiB", false, true},
    {"memory.dirty", "of it dirty", "MiB", false, false},
    {"memory.three", "three of them and the launcher, Pss", "MiB", false, true},
    {"trip.p50", "round trip of ping, p50", "us", false, true},
    {"trip.p99", "round trip of ping, p99", "us", false, true},
    {"trip.spin.p50", "the same, a server that spins, p50", "us", false, false},
    {"trip.spin.p99", "the same, a server that spins, p99", "us", false, false},
    {"trip.cpu", "CPU of one round trip", "us", false, true},
    {"trip.log", "CPU of the log daemon for it", "us", false, false},
    {"button.rate", "button events heard", "/s", true, true},
    {"tag.rate", "tag events heard as objects", "/s", true, true},
    {"tag.cpu-rate", "the same, per second of CPU", "/s", true, false},
    {"tag.single", "one tag, from the device to the script, p50", "ms", false, false},
    {"context.rate", "contexts made by the engine alone, per second of CPU", "/s", true, false},
    {"led.rate", "LED requests sent", "/s", true, true},
    {"idle.cpu", "idle: CPU", "%", false, false},
    {"idle.wakes", "idle: wake-ups", "/s", false, false},
    {"idle.calls", "idle: system calls of a turn", "", false, false},
    {"idle.turn", "idle: CPU of one wake-up", "us", false, false},
    {"table.trip.10", "round trip p50, 10 requests waiting", "us", false, false},
    {"table.trip.10000", "round trip p50, 10,000 requests waiting", "us", false, false},
    {"table.trip.300000", "round trip p50, 300,000 requests waiting", "us", false, false},
    {"table.led.10", "LED requests, 10 requests waiting", "/s", true, false},
    {"table.led.10000", "LED requests, 10,000 requests waiting", "/s", true, false},
    {"table.led.300000", "LED requests, 300,000 requests waiting", "/s", true, false},
    {"listeners.1", "button event p50, 1 listener", "us", false, false},
    {"listeners.100", "button event p50, 100 listeners", "us", false, false},
    {"listeners.10000", "button event p50, 10,000 listeners", "us", false, false},
    {"timers.1", "round trip p50, 1 timer", "us", false, false},
    {"timers.100", "round trip p50, 100 timers", "us", false, false},
    {"timers.10000", "round trip p50, 10,000 timers", "us", false, false},
    {"access.1", "hasAccess, the only name of a descriptor", "us", false, false},
    {"access.100", "hasAccess, the last of 100 names", "us", false, false},
    {"access.10000", "hasAccess, the last of 10,000 names", "us", false, false},
    {"age.trip.young", "round trip p50, after the first 1,000", "us", false, false},
    {"age.trip.old", "round trip p50, after as many as this run makes", "us", false, false},
    {"age.trips", "as many as this run makes", "", true, false},
    {"age.request", "memory that a request leaves behind", "bytes", false, false},
    {"age.awaited", "memory that a request with a function leaves behind", "bytes", false, false},
    {"age.launch.young", "launch to interactive, the first applications", "ms", false, false},
    {"age.launch.old", "launch to interactive, the last of as many as this run launches", "ms",
     false, false},
    {"age.launches", "as many as this run launches", "", true, false},
};

}  // namespace

std::span<const Row> rows() { return kRows; }

void Results::add(const std::string& row, const std::string& contestant, double value) {
  if (std::ranges::none_of(kRows, [&](const Row& known) { return known.name == row; }))
    throw std::out_of_range("no row " + row);
  runs_[{row, contestant}].push_back(value);
}

std::vector<double> Results::runs(const std::string& row, const std::string& contestant) const {
  const auto found = runs_.find({row, contestant});
  return found != runs_.end() ? found->second : std::vector<double>();
}

std::optional<double> Results::value(const std::string& row, const std::string& contestant) const {
  const auto values = runs(row, contestant);
  if (values.empty()) return std::nullopt;
  return median(values);
}

std::optional<double> Results::ratio(const std::string& row, const std::string& contestant,
                                     const std::string& other) const {
  const auto first = value(row, contestant);
  const auto second = value(row, other);
  if (!first || !second || *second == 0) return std::nullopt;
  return *first / *second;
}

}  // namespace morvik::bench
