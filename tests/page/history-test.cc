// The last things that happened.
#include "page/history.h"

#include <gtest/gtest.h>

namespace morvik::test {

using namespace devkit;
namespace {

TEST(HistoryTest, isAnArrayInOrder) {
  History history(10, 100);
  EXPECT_EQ(history.array(), "[]");
  history.add("1");
  history.add("\"b\"");
  EXPECT_EQ(history.array(), "[1,\"b\"]");
  EXPECT_EQ(history.forgotten(), 0U);
}

TEST(HistoryTest, forgetsTheOldestBeyondItsNumber) {
  History history(2, 100);
  for (const char* entry : {"1", "2", "3", "4"}) history.add(entry);
  EXPECT_EQ(history.array(), "[3,4]");
  EXPECT_EQ(history.forgotten(), 2U);
}

TEST(HistoryTest, forgetsTheOldestBeyondItsBytes) {
  History history(100, 5);
  for (const char* entry : {"11", "22", "33"}) history.add(entry);
  EXPECT_EQ(history.array(), "[22,33]");
  history.add("123456");
  EXPECT_EQ(history.array(), "[]") << "one that is too large alone";
  EXPECT_EQ(history.forgotten(), 4U);
}

TEST(HistoryTest, forgetsWhatIsFaintFirst) {
  History history(3, 100);
  history.add("1");
  history.add("2", true);
  history.add("3", true);
  history.add("4");
  EXPECT_EQ(history.array(), "[1,3,4]");
  history.add("5");
  history.add("6");
  EXPECT_EQ(history.array(), "[4,5,6]");
  history.add("7", true);
  EXPECT_EQ(history.array(), "[4,5,6]") << "the only one that is faint";
  EXPECT_EQ(history.forgotten(), 4U);
}

}  // namespace
}  // namespace morvik::test
