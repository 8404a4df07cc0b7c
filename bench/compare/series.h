// Numbers of several runs, and what is told of them.
#pragma once

#include <vector>

namespace morvik::bench {

/// The value below which that share of the values lies, from 0 to 1; of 0.5 the median. Throws
/// std::out_of_range when there are none.
double quantile(std::vector<double> values, double share);
double median(const std::vector<double>& values);

/// What a table tells of a series.
struct Summary {
  double median = 0;
  double min = 0;
  double max = 0;
};
Summary summaryOf(const std::vector<double>& values);

}  // namespace morvik::bench
