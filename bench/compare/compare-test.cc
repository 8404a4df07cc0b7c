// The benchmark works: its arithmetic, its report, and one measure of the host and of the program
// without an engine from end to end. No figure is tested.
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include <nlohmann/json.hpp>

#include "compare/report.h"
#include "compare/targets.h"
#include "support/file-content.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {
namespace {

using namespace bench;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

TEST(SeriesTest, aQuantileLiesBetweenItsNeighbours) {
  EXPECT_DOUBLE_EQ(median({3, 1, 2}), 2);
  EXPECT_DOUBLE_EQ(median({4, 1, 2, 3}), 2.5);
  EXPECT_DOUBLE_EQ(quantile({0, 10, 20, 30, 40}, 0.99), 39.6);
  EXPECT_DOUBLE_EQ(quantile({7}, 0.5), 7);
  EXPECT_THROW(median({}), std::out_of_range);
}

TEST(SeriesTest, aSummaryHasTheLeastAndTheMost) {
  const Summary summary = summaryOf({5, 9, 1});
  EXPECT_DOUBLE_EQ(summary.median, 5);
  EXPECT_DOUBLE_EQ(summary.min, 1);
  EXPECT_DOUBLE_EQ(summary.max, 9);
}

TEST(ResultsTest, aRatioIsOfTheMedians) {
  Results results;
  for (const double value : {2, 4, 60}) results.add("launch.first", kHost, value);
  results.add("launch.first", "node", 40);
  EXPECT_DOUBLE_EQ(results.ratio("launch.first", kHost, "node").value(), 0.1);
  EXPECT_FALSE(results.ratio("launch.first", kHost, "gjs"));
}

TEST(ResultsTest, aRowThatNobodyKnowsIsRefused) {
  Results results;
  EXPECT_THROW(results.add("launch.frist", kHost, 1), std::out_of_range);
}

// The verdict on a target; throws when there is none of that text.
Verdict verdictOn(const Results& results, const std::string& target) {
  for (const Verdict& verdict : verdicts(results))
    if (verdict.target == target) return verdict;
  throw std::runtime_error("no target " + target);
}

TEST(TargetsTest, aRatioAboveItsLimitIsNotMet) {
  const std::string target = "round trip p50, of no engine";
  Results results;
  EXPECT_FALSE(verdictOn(results, target).met());
  results.add("trip.p50", kHost, 160);
  results.add("trip.p50", "floor", 100);
  EXPECT_TRUE(verdictOn(results, target).met());
  results.add("trip.p50", kHost, 170);
  EXPECT_FALSE(verdictOn(results, target).met());
}

TEST(TargetsTest, ARateBelowItsLimitIsNotMet) {
  const std::string target = "button events, of Node.js with duties";
  Results results;
  results.add("button.rate", "node-duties", 100);
  results.add("button.rate", kHost, 149);
  EXPECT_FALSE(verdictOn(results, target).met());
  results.add("button.rate", kHost, 152);
  EXPECT_TRUE(verdictOn(results, target).met());
}

TEST(TargetsTest, flatIsTheMostOfTheLeast) {
  const std::string target = "round trip with 10 to 300,000 waiting, most of least";
  Results results;
  results.add("table.trip.10", kHost, 100);
  results.add("table.trip.10000", kHost, 90);
  EXPECT_FALSE(verdictOn(results, target).value);
  results.add("table.trip.300000", kHost, 135);
  EXPECT_DOUBLE_EQ(verdictOn(results, target).value.value(), 1.5);
}

TEST(ReportTest, theTableHasSpreadsRatiosAndVerdicts) {
  Results results;
  for (const double value : {4, 5, 6}) results.add("launch.first", kHost, value);
  for (const double value : {100, 150, 1250}) results.add("launch.first", "node", value);
  std::ostringstream table;
  writeTable(table, {results, {{kHost, "MorvikVM"}, {"node", "Node.js"}}, {{"cores", "2"}}, true});
  EXPECT_THAT(table.str(), HasSubstr("- cores: 2\n"));
  EXPECT_THAT(table.str(), HasSubstr("| 5.00 (4.00 to 6.00) | 150 (100 to 1,250) |"));
  EXPECT_THAT(table.str(), HasSubstr("|     1.00 |   0.033 |"));
  EXPECT_THAT(
      table.str(),
      HasSubstr("| launch to the first line, of Node.js | at most 0.040 |    0.033 | met |"));
  EXPECT_THAT(table.str(), Not(HasSubstr("LED")));
}

// The least that anybody's run of a row gave.
double leastOf(const nlohmann::json& row) {
  double least = std::numeric_limits<double>::infinity();
  for (const auto& contestant : row["contestants"])
    least = std::min(least, contestant["min"].get<double>());
  return least;
}

const nlohmann::json& rowNamed(const nlohmann::json& results, const std::string& name) {
  const auto& rows = results["rows"];
  const auto found =
      std::ranges::find_if(rows, [&](const auto& row) { return row["name"] == name; });
  if (found == rows.end()) throw std::runtime_error("no row " + name);
  return *found;
}

TEST(CompareTest, measuresTheHostAndTheProgramWithoutAnEngine) {
  const TemporaryFolder out;
  const auto [status, output] = run({BENCH_COMPARE, "--tiny", "--only=round-trip,requests",
                                     "--with=host,floor", "--out=" + out.path().string()});
  ASSERT_EQ(status, 0) << output;
  const auto json = nlohmann::json::parse(contentOf(out / "results.json"));
  ASSERT_THAT(json["rows"], SizeIs(7));
  for (const auto& row : json["rows"])
    for (const char* contestant : {"host", "floor"})
      EXPECT_THAT(row["contestants"][contestant]["runs"], SizeIs(1)) << row.dump();
  for (const char* row : {"trip.p50", "trip.spin.p50", "trip.cpu", "led.rate"})
    EXPECT_GT(leastOf(rowNamed(json, row)), 0) << row;
  EXPECT_THAT(output, HasSubstr("round trip p50, of no engine"));
}

TEST(CompareTest, whatItDoesNotKnowIsRefused) {
  EXPECT_EQ(run({BENCH_COMPARE, "--fast"}).status, 2);
  EXPECT_EQ(run({BENCH_COMPARE, "--tiny", "--only=nothing"}).status, 1);
}

}  // namespace
}  // namespace morvik::test
