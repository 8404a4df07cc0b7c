// The device's time in a test.
#include "test/virtual-time.h"

#include <vector>

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
using namespace std::chrono_literals;
namespace {

class VirtualTimeTest : public ::testing::Test {
 protected:
  void note(std::chrono::milliseconds delay) {
    time_.after(delay, [this] { seen_.push_back(time_.now()); });
  }

  VirtualTime time_{1s};
  std::vector<std::chrono::milliseconds> seen_;
};

TEST_F(VirtualTimeTest, standsStillUntilItIsMoved) {
  EXPECT_EQ(time_.next(), Nanoseconds::max());
  note(5ms);
  EXPECT_EQ(time_.now(), 1000ms);
  EXPECT_EQ(time_.next(), 1005ms);
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(VirtualTimeTest, letsEachThingHappenAtItsTime) {
  note(20ms);
  note(10ms);
  time_.after(10ms, [this] { note(5ms); });
  time_.moveTo(1030ms);
  EXPECT_THAT(seen_, ElementsAre(1010ms, 1015ms, 1020ms));
  EXPECT_EQ(time_.now(), 1030ms);
}

TEST_F(VirtualTimeTest, keepsTheOrderOfWhatIsDueAtOnce) {
  std::vector<int> order;
  for (const int number : {1, 2, 3}) time_.after(10ms, [&, number] { order.push_back(number); });
  time_.moveTo(1010ms);
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(VirtualTimeTest, neverGoesBack) {
  time_.moveTo(500ms);
  EXPECT_EQ(time_.now(), 1000ms);
}

}  // namespace
}  // namespace morvik::test
