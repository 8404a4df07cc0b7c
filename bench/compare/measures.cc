#include "compare/measures.h"

namespace morvik::bench {
namespace {

constexpr Measure kMeasures[] = {
    {"launch", "from the launch line to an interactive application", false, false, measureLaunch},
    {"rest", "memory and idling", false, false, measureRest},
    {"round-trip", "a request and its answer", false, false, measureRoundTrip},
    {"button", "button events, as many as go", false, false, measureButton},
    {"tags", "tag events, many and one", false, false, measureTags},
    {"requests", "LED requests, as many as go", false, false, measureRequests},
    {"engine", "the engine's contexts, and hasAccess", true, false, measureEngine},
    {"crowds", "among many requests, listeners and timers", true, false, measureCrowds},
    {"age", "an application after many round trips", true, true, measureAge},
    {"many-launches", "a launcher after many applications", true, true, measureManyLaunches},
};

}  // namespace

std::span<const Measure> measures() { return kMeasures; }

}  // namespace morvik::bench
