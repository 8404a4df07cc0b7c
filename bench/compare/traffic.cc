// Messages: one after the other, and as many as there are.
#include "compare/session.h"

namespace morvik::bench {
namespace {

constexpr int kWarmUp = 200;
constexpr double kBetweenTags = 0.003;  // seconds; a person is slower

}  // namespace

void measureRoundTrip(Field& field, Contestant& contestant) {
  const std::string& name = contestant.name();
  const int trips = field.sizes.trips;
  Session session(field, contestant, {.name = "ping"});
  session.link().roundTrips(kWarmUp);
  const Activity before = session.activity();
  const Activity logBefore = activityOf(field.log.daemon());
  const auto polling = session.link().roundTrips(trips);
  field.results.add("trip.cpu", name, (session.activity() - before).cpu / trips);
  field.results.add("trip.log", name, (activityOf(field.log.daemon()) - logBefore).cpu / trips);
  field.results.add("trip.p50", name, quantile(polling, 0.5));
  field.results.add("trip.p99", name, quantile(polling, 0.99));
  session.link().wait(Waiting::kSpins);
  const auto spinning = session.link().roundTrips(trips);
  field.results.add("trip.spin.p50", name, quantile(spinning, 0.5));
  field.results.add("trip.spin.p99", name, quantile(spinning, 0.99));
}

// The first burst warms up.
void measureButton(Field& field, Contestant& contestant) {
  const int count = field.sizes.burst;
  Session session(field, contestant, {.name = "button", .count = count});
  session.burst(buttonFrame(), count);
  field.results.add("button.rate", contestant.name(), count / session.burst(buttonFrame(), count));
}

void measureRequests(Field& field, Contestant& contestant) {
  const int count = field.sizes.burst;
  Session session(field, contestant, {.name = "led", .count = count});
  session.exchange(buttonFrame(), count);
  const double microseconds = session.exchange(buttonFrame(), count);
  field.results.add("led.rate", contestant.name(), count / microseconds * 1e6);
}

namespace {

void measureManyTags(Field& field, Contestant& contestant) {
  const int count = field.sizes.tags;
  Session session(field, contestant, {.name = "tags", .count = count});
  session.burst(tagFrame(), count);
  const Activity before = session.activity();
  const double seconds = session.burst(tagFrame(), count);
  const double cpu = (session.activity() - before).cpu / 1e6;
  field.results.add("tag.rate", contestant.name(), count / seconds);
  field.results.add("tag.cpu-rate", contestant.name(), count / cpu);
}

// The script's first line sends a request, so the way back is in the time as well.
void measureSingleTags(Field& field, Contestant& contestant) {
  Session session(field, contestant, {.name = "tags", .count = 1});
  std::vector<double> times;
  for (int i = 0; i < field.sizes.singleTags; ++i) {
    pass(kBetweenTags);
    times.push_back(session.exchange(tagFrame()) / 1000);
  }
  field.results.add("tag.single", contestant.name(), median(times));
}

}  // namespace

void measureTags(Field& field, Contestant& contestant) {
  measureManyTags(field, contestant);
  measureSingleTags(field, contestant);
}

}  // namespace morvik::bench
