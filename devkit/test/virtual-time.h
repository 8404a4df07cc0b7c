// The device's time in a test: it stands still until somebody moves it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

#include "device/scheduler.h"

namespace morvik::devkit {

using Nanoseconds = std::chrono::nanoseconds;

class VirtualTime : public Scheduler {
 public:
  /// Begins at this time, counted from 1970.
  explicit VirtualTime(Nanoseconds start) : time_(start) {}

  void after(std::chrono::milliseconds delay, std::function<void()> what) override;
  std::chrono::milliseconds now() const override {
    return std::chrono::floor<std::chrono::milliseconds>(time_);
  }

  Nanoseconds time() const { return time_; }
  /// When the next thing is to happen; Nanoseconds::max() when nothing is.
  Nanoseconds next() const;
  /// Lets everything happen that is due until then, each thing at its time. An earlier time than
  /// it is changes nothing.
  void moveTo(Nanoseconds time);

 private:
  Nanoseconds time_;
  std::multimap<Nanoseconds, std::function<void()>> toCome_;
};

}  // namespace morvik::devkit
