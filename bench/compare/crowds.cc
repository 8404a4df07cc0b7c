// What a message costs when many wait beside it, and what it costs after many others.
#include <algorithm>

#include "compare/session.h"

namespace morvik::bench {
namespace {

constexpr int kCrowdTrips = 1000;
constexpr int kCrowdWarmUp = 200;
constexpr int kYoung = 1000;

double tripWith(Field& field, Contestant& contestant, const char* task, int others) {
  Session session(field, contestant, {.name = task, .others = others});
  session.link().roundTrips(kCrowdWarmUp);
  return median(session.link().roundTrips(kCrowdTrips));
}

double requestsWith(Field& field, Contestant& contestant, int others) {
  const int count = field.sizes.burst;
  Session session(field, contestant, {.name = "led", .count = count, .others = others});
  session.exchange(buttonFrame(), count);
  return count / session.exchange(buttonFrame(), count) * 1e6;
}

// From the event to the request of the listener that came last.
double eventWith(Field& field, Contestant& contestant, int listeners) {
  Session session(field, contestant, {.name = "listeners", .others = listeners - 1});
  // An event costs a line of the log for each listener.
  const int events = std::clamp(20000 / listeners, 5, kCrowdTrips);
  std::vector<double> times;
  times.reserve(static_cast<std::size_t>(events));
  for (int i = 0; i < events; ++i) times.push_back(session.exchange(buttonFrame()));
  return median(times);
}

}  // namespace

void measureCrowds(Field& field, Contestant& contestant) {
  const auto add = [&](const std::string& row, double value) {
    field.results.add(row, contestant.name(), value);
  };
  for (const int others : {10, 10000, field.sizes.waiting}) {
    // A quick look fills the largest table less; its rows keep their names.
    const std::string size = std::to_string(others == field.sizes.waiting ? kFull.waiting : others);
    add("table.trip." + size, tripWith(field, contestant, "ping", others));
    add("table.led." + size, requestsWith(field, contestant, others));
  }
  for (const int many : {1, 100, 10000}) {
    add("listeners." + std::to_string(many), eventWith(field, contestant, many));
    add("timers." + std::to_string(many), tripWith(field, contestant, "timers", many));
  }
}

namespace {

// Bytes of private memory that a request leaves behind, once the engine has been through its heap.
double memoryOfRequest(Field& field, Contestant& contestant, const Task& task) {
  constexpr int kFirstRounds = 5;
  constexpr int kRounds = 10;
  Session session(field, contestant, task);
  for (int i = 0; i < kFirstRounds; ++i) session.exchange(buttonFrame(), task.count);
  const double before = memoryOf(session.pid()).privateDirty;
  for (int i = 0; i < kRounds; ++i) session.exchange(buttonFrame(), task.count);
  const double grown = memoryOf(session.pid()).privateDirty - before;
  return grown * 1024 * 1024 / kRounds / task.count;
}

}  // namespace

void measureAge(Field& field, Contestant& contestant) {
  const auto add = [&](const char* row, double value) {
    field.results.add(row, contestant.name(), value);
  };
  Session session(field, contestant, {.name = "ping", .roomy = true});
  session.link().roundTrips(kYoung);
  add("age.trip.young", median(session.link().roundTrips(kCrowdTrips)));
  session.link().roundTrips(std::max(0, field.sizes.oldTrips - kYoung - kCrowdTrips));
  add("age.trip.old", median(session.link().roundTrips(kCrowdTrips)));
  add("age.trips", field.sizes.oldTrips);
  const int burst = field.sizes.burst;
  add("age.request", memoryOfRequest(field, contestant, {.name = "led", .count = burst}));
  add("age.awaited", memoryOfRequest(field, contestant, {.name = "awaited", .count = burst}));
}

}  // namespace morvik::bench
