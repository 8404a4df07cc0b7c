// Copies of parts of texts, and the end of a process without memory.
#include "devices/substring.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace morvik::test {
namespace {

TEST(SubstringTest, copiesFromStartUpToEnd) {
  const std::string text = "./a.mp3";
  EXPECT_STREQ(substring(text.c_str(), 2, text.size()).get(), "a.mp3");
  EXPECT_STREQ(substring(text.c_str(), 0, 1).get(), ".");
  EXPECT_STREQ(substring(text.c_str(), 3, 3).get(), "");
  EXPECT_STREQ(substring(text.c_str(), 7, 7).get(), "");
}

TEST(SubstringTest, theCopyIsItsOwn) {
  std::string text = "abc";
  const auto part = substring(text.c_str(), 1, 3);
  text = "xyz";
  EXPECT_STREQ(part.get(), "bc");
}

// A size that no machine has.
TEST(SubstringTest, withoutMemoryTheProcessSaysSoAndEnds) {
  EXPECT_EXIT(substring("text", 0, PTRDIFF_MAX - 1), testing::ExitedWithCode(1),
              "Memoire insuffisante\n");
}

}  // namespace
}  // namespace morvik::test
