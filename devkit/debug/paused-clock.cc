// CLOCK_MONOTONIC without the pauses.
//
// The definition of clock_gettime in this program stands in front of the C library's, so GLib,
// whose timers are all that ends an application by time, reads this clock. It is the one place
// where time comes from: a timer need not be known to be held back, and neither the host nor GLib
// is changed. Other threads keep the system's clock, since they compute from it until when the
// kernel is to let them wait.
#include "debug/paused-clock.h"

#include <dlfcn.h>

#include <ctime>

namespace morvik::devkit {
namespace {

using Nanoseconds = std::chrono::nanoseconds;

struct PausableClock {
  bool isMine = false;
  bool stands = false;
  Nanoseconds stoodAt{0};  // when it was stopped, by the system's clock
  Nanoseconds lost{0};     // by all stops before
};

// Read by signal handlers as well, so it is plain data of the program itself.
thread_local constinit PausableClock pausableClock;

int systemTime(clockid_t clock, timespec* time) {
  using GetTime = int (*)(clockid_t, timespec*);
  static const auto real = reinterpret_cast<GetTime>(dlsym(RTLD_NEXT, "clock_gettime"));
  return real(clock, time);
}

Nanoseconds inNanoseconds(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
}

timespec inParts(Nanoseconds time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  return {.tv_sec = seconds.count(), .tv_nsec = (time - seconds).count()};
}

Nanoseconds systemTime() {
  timespec time{};
  systemTime(CLOCK_MONOTONIC, &time);
  return inNanoseconds(time);
}

}  // namespace

void startPausableClock() {
  systemTime();  // finds the C library's function before a signal handler asks for the time
  pausableClock.isMine = true;
}

StoppedClock::StoppedClock() : since_(systemTime()), outermost_(!pausableClock.stands) {
  if (!outermost_) return;
  pausableClock.stoodAt = since_;
  pausableClock.stands = true;
}

StoppedClock::~StoppedClock() {
  if (!outermost_) return;
  pausableClock.lost += systemTime() - since_;
  pausableClock.stands = false;
}

std::chrono::milliseconds StoppedClock::stoodFor() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(systemTime() - since_);
}

}  // namespace morvik::devkit

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  using morvik::devkit::pausableClock;
  const int result = morvik::devkit::systemTime(clock, time);
  if (clock != CLOCK_MONOTONIC || !pausableClock.isMine || result != 0) return result;
  const auto now =
      pausableClock.stands ? pausableClock.stoodAt : morvik::devkit::inNanoseconds(*time);
  *time = morvik::devkit::inParts(now - pausableClock.lost);
  return result;
}
