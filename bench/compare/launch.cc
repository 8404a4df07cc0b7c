// From the launch line, or the start of a program, to a living application.
#include "compare/measures.h"
#include "compare/series.h"

namespace morvik::bench {
namespace {

struct LaunchTimes {
  std::vector<double> first;        // ms
  std::vector<double> interactive;  // ms
};

void launchOnce(Field& field, Contestant& contestant, LaunchTimes& times) {
  const auto begun = Clock::now();
  const auto since = [&] { return Microseconds(Clock::now() - begun).count() / 1000; };
  const auto application = contestant.launch();
  application->output().await("started");
  times.first.push_back(since());
  Link link = field.server.accept();
  link.receive();
  link.answer();
  application->output().await("granted");
  times.interactive.push_back(since());
  link.skip(1);
}

// The first launch warms up: files come to memory, and a launcher may still be at its own start.
LaunchTimes launch(Field& field, Contestant& contestant, int count) {
  contestant.prepare(field.server.port(), {}, /*speaks=*/true);
  LaunchTimes ignored;
  launchOnce(field, contestant, ignored);
  LaunchTimes times;
  for (int i = 0; i < count; ++i) launchOnce(field, contestant, times);
  return times;
}

}  // namespace

void measureLaunch(Field& field, Contestant& contestant) {
  const LaunchTimes times = launch(field, contestant, field.sizes.launches);
  field.results.add("launch.first", contestant.name(), median(times.first));
  field.results.add("launch.interactive", contestant.name(), median(times.interactive));
}

void measureManyLaunches(Field& field, Contestant& contestant) {
  const int count = field.sizes.oldLaunches;
  const auto times = launch(field, contestant, count).interactive;
  const int few = std::max(1, std::min(100, count / 10));
  field.results.add("age.launch.young", contestant.name(),
                    median({times.begin(), times.begin() + few}));
  field.results.add("age.launch.old", contestant.name(), median({times.end() - few, times.end()}));
  field.results.add("age.launches", contestant.name(), count);
}

}  // namespace morvik::bench
