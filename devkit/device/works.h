// The table of what is being done: at most one work of each kind.
#pragma once

#include <array>

#include "device/scheduler.h"
#include "device/work.h"

namespace morvik::devkit {

/// Knows who does what until when, and neither messages nor events.
class Works {
 public:
  /// Called when a work has gone on for its time. It still goes on, until it is taken.
  using TimeIsUp = std::function<void(Work work)>;

  /// A work that was begun, and the order for it.
  struct Taken {
    Underway underway;
    Order order;
  };

  /// The scheduler must outlive the table, or at least never call it again once it is gone.
  Works(Scheduler& scheduler, TimeIsUp timeIsUp)
      : scheduler_(scheduler), timeIsUp_(std::move(timeIsUp)) {}
  Works(const Works&) = delete;
  Works& operator=(const Works&) = delete;

  /// Nothing of the kind may be going on. `length` is cut to kLongestWork.
  void begin(Work work, Order order, std::chrono::milliseconds length);
  /// The work goes on for the given time from now, in place of the time that it had.
  void prolong(Work work, std::chrono::milliseconds length);
  /// The work goes on without an end of its own.
  void suspend(Work work);
  /// The work is over. Nothing when none of the kind was going on.
  std::optional<Taken> take(Work work);

  /// Nothing when none of the kind goes on.
  std::optional<Underway> find(Work work) const;
  /// All that go on, in the order of `Work`.
  std::vector<Underway> all() const;

 private:
  struct Place {
    std::optional<Taken> taken;  // nothing while nothing is done
    unsigned turn = 0;           // changes with every begin and end: how a late timer knows
  };
  Place& place(Work work) { return places_[static_cast<std::size_t>(work)]; }
  const Place& place(Work work) const { return places_[static_cast<std::size_t>(work)]; }

  Scheduler& scheduler_;
  TimeIsUp timeIsUp_;
  std::array<Place, kWorkKinds> places_;
};

}  // namespace morvik::devkit
