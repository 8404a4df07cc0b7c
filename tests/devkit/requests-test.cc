// What programs may say to the device, sense and nonsense.
#include "device/requests.h"

#include <nlohmann/json.hpp>

#include "bench.h"
#include "device/json.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

class RequestsTest : public ::testing::Test {
 protected:
  Json answer(const std::string& line) {
    const std::string text = answerTo(bench_.device, line);
    EXPECT_THAT(text, Not(HasSubstr("\n"))) << line;
    return Json::parse(text);
  }

  Bench bench_;
};

TEST_F(RequestsTest, wordsAndNamesAreAnsweredWithTheirOutcome) {
  for (const char* line :
       {"button SIMPLE", R"({"stimulus":"button","arguments":{"type":"SIMPLE"}})", "",
        "# a comment"}) {
    const Json outcome = answer(line);
    EXPECT_EQ(outcome["event"], "outcome");
    EXPECT_EQ(outcome["time"], bench_.scheduler.now().count());
    EXPECT_EQ(outcome["done"], true) << line;
  }
  EXPECT_EQ(bench_.said().size(), 4U);
}

TEST_F(RequestsTest, theViewAndTheTableAreGiven) {
  EXPECT_EQ(answer(R"({"view":true})")["view"]["applications"].size(), 2U);
  EXPECT_THAT(answer(R"({"stimuli":true})")["stimuli"], Not(IsEmpty()));
}

TEST_F(RequestsTest, nonsenseIsToldAndDoesNothing) {
  const std::string deep = R"({"stimulus":"stop","arguments":)";
  for (const std::string& line :
       {std::string("{"), std::string("{}"), std::string(R"({"view":7})"),
        std::string(R"({"view":null})"), std::string(R"({"view":true,"stimuli":true})"),
        std::string(R"({"stimuli":"yes"})"), std::string(R"({"stimulus":{"a":1}})"),
        std::string("{\"stimulus\":\"\xff\"}"), deep + std::string(100000, '['),
        deep + std::string(100000, '[') + std::string(100000, ']') + '}',
        std::string(
            R"({"stimulus":"ear","arguments":{"side":"LEFT","step":99999999999999999999}})"),
        std::string(R"({"stimulus":"stop","app":1e300})")}) {
    const Json outcome = answer(line);
    EXPECT_EQ(outcome["event"], "outcome") << line.substr(0, 60);
    EXPECT_EQ(outcome["done"], false) << line.substr(0, 60);
    EXPECT_THAT(outcome["text"].get<std::string>(), Not(IsEmpty()));
  }
  EXPECT_THAT(bench_.events.all, IsEmpty());
}

}  // namespace
}  // namespace morvik::test
