// What was measured: a value a run, for each row of the table and each contestant.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "compare/series.h"

namespace morvik::bench {

/// The contestant that all others are held against.
inline constexpr const char* kHost = "host";

/// A row of the table, known before anything is measured.
struct Row {
  const char* name;   ///< as in the JSON: "launch.first"
  const char* label;  ///< for people
  const char* unit;
  bool moreIsBetter;
  bool drawn;  ///< stands in the picture
};
std::span<const Row> rows();

class Results {
 public:
  /// Throws std::out_of_range when no row has that name.
  void add(const std::string& row, const std::string& contestant, double value);

  /// The runs' values; empty when nothing was measured.
  [[nodiscard]] std::vector<double> runs(const std::string& row,
                                         const std::string& contestant) const;
  /// Their median; nothing when nothing was measured.
  [[nodiscard]] std::optional<double> value(const std::string& row,
                                            const std::string& contestant) const;
  /// How often the first one's value is the second one's.
  [[nodiscard]] std::optional<double> ratio(const std::string& row, const std::string& contestant,
                                            const std::string& other) const;

 private:
  std::map<std::pair<std::string, std::string>, std::vector<double>> runs_;
};

}  // namespace morvik::bench
