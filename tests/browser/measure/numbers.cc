// Order statistics of a few hundred values.
#include "numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace morvik::test {

double quantile(std::vector<double> values, double part) {
  std::ranges::sort(values);
  const double rank = std::ceil(part * static_cast<double>(values.size())) - 1;
  return values.at(static_cast<std::size_t>(std::max(0.0, rank)));
}

void printTimes(const std::string& what, const std::vector<double>& values) {
  std::printf("%s: n=%zu, median %.1f ms, p99 %.1f ms, max %.1f ms\n", what.c_str(), values.size(),
              quantile(values, 0.5), quantile(values, 0.99), quantile(values, 1));
  std::fflush(stdout);
}

}  // namespace morvik::test
