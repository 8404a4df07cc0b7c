// The application's clock, which stands still while a debugger has it paused.
#pragma once

#include <chrono>

namespace morvik::devkit {

/// Called once in the thread whose clock it is to be. All other threads have the system's.
void startPausableClock();

/// While it lives, CLOCK_MONOTONIC stands still for the application's thread, and afterwards goes
/// on from there. What counts by it, all timers of the main loop among them, is late by the time
/// that has passed and by no more. May be nested; to be used in the application's thread.
class StoppedClock {
 public:
  StoppedClock();
  ~StoppedClock();
  StoppedClock(const StoppedClock&) = delete;
  StoppedClock& operator=(const StoppedClock&) = delete;

  /// How long it has stood still.
  std::chrono::milliseconds stoodFor() const;

 private:
  std::chrono::nanoseconds since_;
  bool outermost_;
};

}  // namespace morvik::devkit
