// What is measured. A measure is asked for one run of one contestant at a time, so that whatever
// disturbs the machine meets all of them.
#pragma once

#include <span>

#include "compare/contestants.h"
#include "compare/link.h"
#include "compare/results.h"

namespace morvik::bench {

/// How much of everything: figures to publish, or a look within three minutes.
struct Sizes {
  int runs;
  int launches;
  double restSeconds;  ///< until memory has come to rest
  double idleSeconds;
  int trips;
  int burst;  ///< events or requests at once
  int tags;
  int singleTags;
  int waiting;   ///< the largest table of awaited replies
  int oldTrips;  ///< round trips until an application counts as old
  int oldLaunches;
};
inline constexpr Sizes kFull{5, 20, 2, 5, 10000, 20000, 2000, 300, 300000, 1000000, 10000};
inline constexpr Sizes kQuick{5, 3, 0.5, 0.7, 1000, 5000, 300, 50, 30000, 20000, 300};
/// For a test of this program.
inline constexpr Sizes kTiny{1, 1, 0, 0.05, 100, 200, 20, 3, 100, 200, 5};

struct Field {
  const Sizes& sizes;
  const Places& places;
  const SystemLog& log;
  Server server;
  Results results;
};

struct Measure {
  const char* name;  ///< as in --only
  const char* what;
  bool hostOnly;
  bool once;  ///< the medians of many rounds in one run
  void (*run)(Field& field, Contestant& contestant);
};
std::span<const Measure> measures();

void measureLaunch(Field& field, Contestant& contestant);
void measureRest(Field& field, Contestant& contestant);
void measureRoundTrip(Field& field, Contestant& contestant);
void measureButton(Field& field, Contestant& contestant);
void measureTags(Field& field, Contestant& contestant);
void measureRequests(Field& field, Contestant& contestant);
void measureEngine(Field& field, Contestant& contestant);
void measureCrowds(Field& field, Contestant& contestant);
void measureAge(Field& field, Contestant& contestant);
void measureManyLaunches(Field& field, Contestant& contestant);

}  // namespace morvik::bench
