// A Scheduler on a GLib main loop.
#pragma once

#include <memory>
#include <unordered_set>

#include "device/scheduler.h"

namespace morvik::devkit {

/// Uses the thread-default main context of the caller of `after`. What is still to come when the
/// agenda ends never happens.
class Agenda : public Scheduler {
 public:
  Agenda();
  ~Agenda() override;
  Agenda(const Agenda&) = delete;
  Agenda& operator=(const Agenda&) = delete;

  void after(std::chrono::milliseconds delay, std::function<void()> what) override;
  /// The time of day when the agenda was made, and what has passed since.
  std::chrono::milliseconds now() const override;

 private:
  struct Entry;
  static int onTime(void* entry);

  const std::chrono::microseconds start_;  // when the machine's own clock was 0
  std::unordered_set<Entry*> entries_;     // each is owned by its loop source
};

}  // namespace morvik::devkit
