// The start on trial leaves nothing behind that an application or the log could show.
#include "host/rehearsal.h"

#include <filesystem>
#include <iterator>

#include "support/matchers.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class RehearsalTest : public ScriptTest {};

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

TEST_F(RehearsalTest, leavesNoRecordNoDescriptorAndNoThread) {
  const auto before = openDescriptors();
  testing::internal::CaptureStderr();
  rehearse();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(log.texts(), IsEmpty());
  EXPECT_EQ(openDescriptors(), before);
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  EXPECT_EQ(std::distance(begin(tasks), end(tasks)), 1);
}

TEST_F(RehearsalTest, leavesScriptsAsTheyWere) {
  const std::string before = run("Object.getOwnPropertyNames(this).join()");
  rehearse();
  EXPECT_EQ(run("Object.getOwnPropertyNames(this).join()"), before);
  EXPECT_EQ(run("typeof kept"), "undefined");
}

}  // namespace
}  // namespace morvik::test
