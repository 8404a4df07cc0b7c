// Medians and the like.
#pragma once

#include <string>
#include <vector>

namespace morvik::test {

/// The value below which this part of all values lies, from 0 to 1. There must be some.
double quantile(std::vector<double> values, double part);

/// Prints number, median, 99th percentile and maximum in milliseconds.
void printTimes(const std::string& what, const std::vector<double>& values);

}  // namespace morvik::test
