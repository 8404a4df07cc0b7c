// Identifiers: their form, and that no two are the same.
#include "host/uuid.h"

#include <set>

#include "support/matchers.h"

namespace morvik::test {
namespace {

TEST(UuidTest, isLowerCaseInTheUsualForm) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_THAT(newUuid(),
                testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                                      "[0-9a-f]{12}"));
  }
}

TEST(UuidTest, isFreshEachTime) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) seen.insert(newUuid());
  EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace
}  // namespace morvik::test
