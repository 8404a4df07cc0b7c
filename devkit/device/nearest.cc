// Distances between words: letters that change, come or go.
#include "device/nearest.h"

#include <algorithm>
#include <numeric>

namespace morvik::devkit {
namespace {

std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::vector<std::size_t> next{i};
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = row[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      next.push_back(std::min({change, row[j] + 1, next[j - 1] + 1}));
    }
    row = std::move(next);
  }
  return row.back();
}

}  // namespace

std::optional<std::string> nearest(const std::string& word, const std::vector<std::string>& names) {
  constexpr std::size_t kPart = 3;
  std::size_t least = std::max<std::size_t>(1, word.size() / kPart) + 1;
  std::optional<std::string> best;
  for (const std::string& name : names) {
    const std::size_t far = distance(word, name);
    if (far >= least) continue;
    least = far;
    best = name;
  }
  return best;
}

}  // namespace morvik::devkit
