// Frames that are on their way.
#include "page/send-window.h"

namespace morvik::devkit {

bool SendWindow::hasRoom(std::size_t bytes) const {
  if (unseen_.empty()) return true;
  return unseen_.size() < kMostFrames && unseenBytes_ + bytes <= kMostBytes;
}

bool SendWindow::isOverrun() const {
  return unseen_.size() >= 2 * kMostFrames || unseenBytes_ >= 4 * kMostBytes;
}

std::uint64_t SendWindow::add(std::size_t bytes) {
  unseen_.push_back(bytes);
  unseenBytes_ += bytes;
  return ++lastNumber_;
}

bool SendWindow::acknowledge(std::uint64_t number) {
  if (number > lastNumber_) return false;
  const std::uint64_t left = lastNumber_ - number;
  while (unseen_.size() > left) {
    unseenBytes_ -= unseen_.front();
    unseen_.pop_front();
  }
  return true;
}

}  // namespace morvik::devkit
