// What the figures are to be, as ratios within one run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "compare/results.h"

namespace morvik::bench {

struct Verdict {
  std::string target;  ///< for people: "launch to first line, of Node.js"
  bool atMost;         ///< the limit is an upper one
  double limit;
  std::optional<double> value;  ///< nothing when it was not measured
  [[nodiscard]] bool met() const { return value && (atMost ? *value <= limit : *value >= limit); }
};

std::vector<Verdict> verdicts(const Results& results);

}  // namespace morvik::bench
