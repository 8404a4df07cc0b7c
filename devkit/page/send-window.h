// How much one page was sent and has not acknowledged yet. A page that stops reading shows here,
// long before anything grows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

namespace morvik::devkit {

/// Pure accounting; whoever sends asks first.
class SendWindow {
 public:
  /// What may be on its way to a page: frames, and their bytes together.
  static constexpr std::size_t kMostFrames = 1000;
  static constexpr std::size_t kMostBytes = std::size_t{1024} * 1024;

  /// Whether a frame of that size may be sent. One frame may always be on its way, however large.
  bool hasRoom(std::size_t bytes) const;
  /// Whether so much is on its way that a page can only be one that asks and never reads.
  bool isOverrun() const;

  /// Notes a frame as sent and gives its number: 1, 2, 3, ...
  std::uint64_t add(std::size_t bytes);

  /// The page has seen everything up to this number. False when that was never sent.
  [[nodiscard]] bool acknowledge(std::uint64_t number);

 private:
  std::deque<std::size_t> unseen_;  // the sizes, oldest first
  std::size_t unseenBytes_ = 0;
  std::uint64_t lastNumber_ = 0;
};

}  // namespace morvik::devkit
