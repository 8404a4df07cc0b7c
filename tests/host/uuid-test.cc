// Identifiers: their form, and that no two are the same.
#include "host/uuid.h"

#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <string>

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

// A child knows what its parent had drawn before the fork.
TEST(UuidTest, isAnotherInEachProcess) {
  newUuid();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    const std::string id = newUuid();
    _exit(write(ends[1], id.data(), id.size()) == 36 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  std::string ofChild(36, '\0');
  ASSERT_EQ(read(ends[0], ofChild.data(), ofChild.size()), 36);
  EXPECT_NE(newUuid(), ofChild);
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace morvik::test
