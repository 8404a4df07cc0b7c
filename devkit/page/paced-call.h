// A call that many ask for and that is made seldom.
#pragma once

#include <chrono>
#include <functional>

#include "device/owned.h"

namespace morvik::devkit {

/// Uses the thread-default main context of the one who makes it, which must run.
class PacedCall {
 public:
  /// `call` is made at most once in each interval.
  PacedCall(std::chrono::milliseconds interval, std::function<void()> call);
  ~PacedCall();
  PacedCall(const PacedCall&) = delete;
  PacedCall& operator=(const PacedCall&) = delete;

  /// The call is made soon, never before this returns: with the next turn of the loop when the last
  /// one is an interval ago, and once for all who asked until then.
  void ask();

 private:
  static gboolean onTime(gpointer self);

  std::chrono::microseconds interval_;
  std::function<void()> call_;
  GSourceOwned source_;
  bool asked_ = false;
  gint64 last_ = 0;  // when the call was made, on the monotonic clock
};

}  // namespace morvik::devkit
