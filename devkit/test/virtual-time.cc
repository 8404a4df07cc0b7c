// What is to come, in the order of its times; what is due at the same time, as it was asked for.
#include "test/virtual-time.h"

#include <algorithm>

namespace morvik::devkit {

void VirtualTime::after(std::chrono::milliseconds delay, std::function<void()> what) {
  toCome_.emplace(time_ + delay, std::move(what));
}

Nanoseconds VirtualTime::next() const {
  return toCome_.empty() ? Nanoseconds::max() : toCome_.begin()->first;
}

void VirtualTime::moveTo(Nanoseconds time) {
  while (next() <= time) {
    const auto due = toCome_.extract(toCome_.begin());
    time_ = std::max(time_, due.key());
    due.mapped()();
  }
  time_ = std::max(time_, time);
}

}  // namespace morvik::devkit
