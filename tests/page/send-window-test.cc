// How much may be on its way to a page.
#include "page/send-window.h"

#include <gtest/gtest.h>

namespace morvik::test {

using namespace devkit;
namespace {

TEST(SendWindowTest, numbersFramesFromOne) {
  SendWindow window;
  EXPECT_EQ(window.add(10), 1U);
  EXPECT_EQ(window.add(10), 2U);
}

TEST(SendWindowTest, isFullOfFrames) {
  SendWindow window;
  for (std::size_t i = 0; i < SendWindow::kMostFrames; ++i) {
    EXPECT_TRUE(window.hasRoom(1));
    window.add(1);
  }
  EXPECT_FALSE(window.hasRoom(1));
  EXPECT_TRUE(window.acknowledge(1));
  EXPECT_TRUE(window.hasRoom(1));
}

TEST(SendWindowTest, isFullOfBytes) {
  SendWindow window;
  window.add(SendWindow::kMostBytes - 10);
  EXPECT_TRUE(window.hasRoom(10));
  EXPECT_FALSE(window.hasRoom(11));
  EXPECT_TRUE(window.acknowledge(1));
  EXPECT_TRUE(window.hasRoom(11));
}

TEST(SendWindowTest, takesOneFrameThatIsLargerThanItself) {
  SendWindow window;
  EXPECT_TRUE(window.hasRoom(2 * SendWindow::kMostBytes));
  window.add(2 * SendWindow::kMostBytes);
  EXPECT_FALSE(window.hasRoom(1));
  EXPECT_FALSE(window.isOverrun());
}

TEST(SendWindowTest, doesNotTakeAnAcknowledgementOfTheFuture) {
  SendWindow window;
  EXPECT_FALSE(window.acknowledge(1));
  window.add(1);
  EXPECT_FALSE(window.acknowledge(2));
  EXPECT_TRUE(window.acknowledge(1));
  EXPECT_TRUE(window.acknowledge(1)) << "twice";
  EXPECT_TRUE(window.acknowledge(0)) << "an old one";
}

TEST(SendWindowTest, isOverrunByWhatIsSentWithoutRoom) {
  SendWindow window;
  while (!window.isOverrun()) window.add(1);
  EXPECT_EQ(window.add(1), 2 * SendWindow::kMostFrames + 1);
  EXPECT_TRUE(window.acknowledge(2 * SendWindow::kMostFrames));
  EXPECT_FALSE(window.isOverrun());
}

}  // namespace
}  // namespace morvik::test
