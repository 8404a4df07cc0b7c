// The clock of this program, which stands still when it is told.
#include "debug/paused-clock.h"

#include <glib.h>

#include <optional>
#include <thread>

#include "support/matchers.h"
#include "support/waiting.h"

namespace morvik::test {

using namespace devkit;
namespace {

constexpr gint64 kPassed = 20000;  // microseconds

// By the time of day, which goes on.
void letTimePass() {
  const gint64 end = g_get_real_time() + kPassed;
  waitUntil("time to pass", [end] { return g_get_real_time() >= end; });
}

gint64 timeOfAnotherThread() {
  gint64 time = 0;
  std::thread([&time] { time = g_get_monotonic_time(); }).join();
  return time;
}

// How far this thread's clock is behind.
gint64 lostTime() {
  const gint64 own = g_get_monotonic_time();
  return timeOfAnotherThread() - own;
}

class PausedClock : public ::testing::Test {
 protected:
  PausedClock() { startPausableClock(); }
};

TEST_F(PausedClock, standsStillForGLibAndGoesOnFromThere) {
  std::optional<StoppedClock> stopped(std::in_place);
  const gint64 before = g_get_monotonic_time();
  letTimePass();
  EXPECT_EQ(g_get_monotonic_time(), before);
  EXPECT_GE(stopped->stoodFor().count(), kPassed / 1000 - 1);
  stopped.reset();
  EXPECT_GE(g_get_monotonic_time(), before);
  EXPECT_GE(lostTime(), kPassed - 1000);
}

TEST_F(PausedClock, standsStillUntilTheOutermostStopIsOver) {
  std::optional<StoppedClock> outer(std::in_place);
  const gint64 before = g_get_monotonic_time();
  {
    const StoppedClock inner;
    letTimePass();
  }
  letTimePass();
  EXPECT_EQ(g_get_monotonic_time(), before);
  const auto stood = std::chrono::microseconds(outer->stoodFor()).count();
  outer.reset();
  EXPECT_GE(stood, 2 * kPassed - 1000);
  EXPECT_GE(lostTime(), 2 * kPassed - 1000);
  EXPECT_GE(g_get_monotonic_time(), before);
}

}  // namespace
}  // namespace morvik::test
