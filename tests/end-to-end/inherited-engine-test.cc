// One engine is made in the launcher, and every application goes on with a copy of it.
#include <fstream>
#include <string>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

// Fills the young space over and over, keeps some of it, compiles, throws and collects.
constexpr char kHardWork[] =
    "function work(seed) {"
    "  var kept = [], sum = 0;"
    "  for (var i = 0; i < 20000; ++i) {"
    "    var entry = {number: i, text: 'x' + i % 97, list: [i, seed]};"
    "    if (i % 16 === 0) kept.push(entry);"
    "    sum = (sum * 31 + entry.text.length + entry.list[0]) % 1000003;"
    "  }"
    "  try { null.nothing; } catch (e) { sum += e instanceof TypeError ? 1 : 0; }"
    "  var made = new Function('a', 'return a * ' + seed + ' + ' + kept.length);"
    "  sum += made(7) + JSON.parse(JSON.stringify(kept)).length;"
    "  return sum + /x(\\d+)/.exec(kept[5].text)[1];"
    "}";

using InheritedEngineTest = SystemTest;

// The engine leaves its heap out of a fork, unless it is told otherwise.
TEST_F(InheritedEngineTest, aForkLeavesNothingOut) {
  run("log('here');").waitForLog("JSLOG: here");
  std::ifstream regions("/proc/" + std::to_string(host().pid()) + "/smaps");
  int seen = 0;
  for (std::string line; std::getline(regions, line);) {
    if (!line.starts_with("VmFlags:")) continue;
    ++seen;
    EXPECT_THAT(line + " ", Not(HasSubstr(" dc ")));
  }
  EXPECT_GT(seen, 0);
}

// Sixty in all, three of them alive at a time: what one does to its heap no other one sees.
TEST_F(InheritedEngineTest, manyApplicationsGetTheSameResults) {
  constexpr int kMany = 58;
  Guest first =
      invite("setTimeout(1, function() { work(1); return true; });" + std::string(kHardWork));
  Guest second =
      invite("setTimeout(1, function() { work(2); return true; });" + std::string(kHardWork));
  first.grant();
  second.grant();
  apps.app("worker", {},
           std::string(kHardWork) +
               "log(work(5)); setTimeout(0, function() { log(work(5)); exit(); });");
  std::string result;
  for (int i = 0; i < kMany; ++i) {
    App worker = launch("worker");
    const auto told = worker.logged(2);
    if (result.empty()) result = told[0];
    EXPECT_THAT(told, ElementsAre(result, result));
    waitUntilReaped(worker, 2);
  }
  EXPECT_TRUE(first.app.alive());
  EXPECT_TRUE(second.app.alive());
  EXPECT_THAT(first.app.warnings(), ElementsAre(kNoParams));
}

}  // namespace
}  // namespace morvik::test
