// Memory over the course of one phase, and what it says.
#pragma once

#include <string>
#include <vector>

#include "soak/memory.h"

namespace morvik::test {

class Curve {
 public:
  struct Point {
    long done;
    Memory memory;
  };

  /// `what` is counted, as in "messages in".
  explicit Curve(std::string what) : what_(std::move(what)) {}

  void add(long done, const Memory& memory) { points_.push_back({done, memory}); }

  [[nodiscard]] const std::string& what() const { return what_; }
  [[nodiscard]] const std::vector<Point>& points() const { return points_; }

  /// Bytes of its own memory that the process gains with each one, once it has warmed up: the slope
  /// of the straight line that fits the last three quarters of the points best.
  [[nodiscard]] double slope() const;
  /// By how much the highest point of the second half lies above that of the first, in MiB. The
  /// heap of an engine rises and falls by several MiB as it collects, and a straight line sees that
  /// too; what leaks raises this.
  [[nodiscard]] double rise() const;

 private:
  [[nodiscard]] std::size_t warm() const { return points_.size() / 4; }

  std::string what_;
  std::vector<Point> points_;
};

/// The curves as an SVG picture: own memory over the share of each phase that is done.
std::string picture(const std::vector<Curve>& curves);

}  // namespace morvik::test
