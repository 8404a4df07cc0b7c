// How the device does things later, without knowing what a main loop is.
#pragma once

#include <chrono>
#include <functional>

namespace morvik::devkit {

class Scheduler {
 public:
  virtual ~Scheduler() = default;
  /// Calls `what` once, `delay` from now, never before this call has returned.
  virtual void after(std::chrono::milliseconds delay, std::function<void()> what) = 0;
  /// Milliseconds since 1970, by a clock that never goes back and agrees with `after`.
  virtual std::chrono::milliseconds now() const = 0;
};

}  // namespace morvik::devkit
