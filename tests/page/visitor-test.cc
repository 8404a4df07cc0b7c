// One open page, and what it is owed.
#include "page/visitor.h"

#include <string>
#include <vector>

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

class VisitorTest : public ::testing::Test {
 protected:
  void fill() {
    for (std::size_t i = 0; i < SendWindow::kMostFrames; ++i) visitor_.tellEvent("\"e\":0");
    sent_.clear();
  }
  void settle() {
    visitor_.settle(
        [this](Visitor::Part part) {
          return part == Visitor::Part::kView ? "\"view\":" + view_ : "\"applications\":0";
        },
        [](const Missed& missed) {
          return "\"missed\":[" + std::to_string(missed.log) + "," + std::to_string(missed.events) +
                 "]";
        });
  }

  std::vector<std::string> sent_;
  std::string view_ = "0";
  Visitor visitor_{[this](const std::string& frame) { sent_.push_back(frame); }};
};

TEST_F(VisitorTest, numbersWhatItIsTold) {
  visitor_.tell("\"hello\":0");
  visitor_.tellEvent("\"e\":1");
  visitor_.tellLog("\"l\":1", 1);
  EXPECT_THAT(sent_,
              ElementsAre(R"({"seq":1,"hello":0})", R"({"seq":2,"e":1})", R"({"seq":3,"l":1})"));
}

TEST_F(VisitorTest, getsAPartOnceHoweverOftenItChanged) {
  visitor_.owe(Visitor::Part::kView);
  visitor_.owe(Visitor::Part::kView);
  EXPECT_THAT(sent_, IsEmpty());
  view_ = "7";
  settle();
  settle();
  EXPECT_THAT(sent_, ElementsAre(R"({"seq":1,"view":7})"));
}

TEST_F(VisitorTest, hearsWhatWasLeftOutAndThenTheViewOfThen) {
  fill();
  visitor_.tellEvent("\"e\":1");
  visitor_.tellLog("\"l\":1", 3);
  visitor_.owe(Visitor::Part::kView);
  settle();
  EXPECT_THAT(sent_, IsEmpty()) << "there is no room";
  view_ = "8";
  EXPECT_TRUE(visitor_.acknowledge(500));
  visitor_.tellEvent("\"e\":2");
  EXPECT_THAT(sent_, IsEmpty()) << "a gap is told before what comes behind it";
  settle();
  EXPECT_THAT(sent_, ElementsAre(R"({"seq":1001,"missed":[3,2]})", R"({"seq":1002,"view":8})"));
  visitor_.tellEvent("\"e\":3");
  EXPECT_EQ(sent_.back(), R"({"seq":1003,"e":3})");
}

TEST_F(VisitorTest, hearsAnAnswerEvenWithoutRoom) {
  fill();
  visitor_.tell("\"outcome\":0");
  EXPECT_THAT(sent_, ElementsAre(R"({"seq":1001,"outcome":0})"));
  EXPECT_FALSE(visitor_.isOverrun());
  for (std::size_t i = 0; i < SendWindow::kMostFrames; ++i) visitor_.tell("\"outcome\":0");
  EXPECT_TRUE(visitor_.isOverrun());
}

TEST_F(VisitorTest, keepsADebtForWhichThereIsNoRoom) {
  fill();
  visitor_.owe(Visitor::Part::kView);
  visitor_.owe(Visitor::Part::kApplications);
  settle();
  EXPECT_TRUE(visitor_.acknowledge(1));
  settle();
  EXPECT_THAT(sent_, ElementsAre(R"({"seq":1001,"view":0})"));
  EXPECT_TRUE(visitor_.acknowledge(1001));
  settle();
  EXPECT_EQ(sent_.back(), R"({"seq":1002,"applications":0})");
}

}  // namespace
}  // namespace morvik::test
