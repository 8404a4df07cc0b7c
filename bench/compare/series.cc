#include "compare/series.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace morvik::bench {

double quantile(std::vector<double> values, double share) {
  std::ranges::sort(values);
  const double place = share * (static_cast<double>(values.size()) - 1);
  const auto below = static_cast<std::size_t>(std::max(place, 0.0));
  const double low = values.at(below);
  if (below + 1 >= values.size()) return low;
  return low + (values[below + 1] - low) * (place - std::floor(place));
}

double median(const std::vector<double>& values) { return quantile(values, 0.5); }

Summary summaryOf(const std::vector<double>& values) {
  return {median(values), quantile(values, 0), quantile(values, 1)};
}

}  // namespace morvik::bench
