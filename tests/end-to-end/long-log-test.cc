// Log lines that are longer than what one record of the system log can hold.
#include <gmock/gmock.h>
#include <syslog.h>

#include <string>

#include "support/system/system-test.h"

namespace morvik {
namespace {

constexpr std::size_t kMaxRecord = 131072;
const std::string kHead = "JSLOG: ";

class LongLogTest : public SystemTest {
 protected:
  // What the system log has of a text of so many letters that a script logs.
  std::string recordOf(std::size_t letters) {
    app = run("log('x'.repeat(" + std::to_string(letters) + ")); log('behind');");
    return app.waitForLogThatStarts(kHead + "x").text;
  }

  App app;
};

TEST_F(LongLogTest, upToItsLimitARecordIsWhole) {
  const std::size_t letters = kMaxRecord - kHead.size();
  EXPECT_EQ(recordOf(letters), kHead + std::string(letters, 'x'));
}

TEST_F(LongLogTest, beyondItARecordIsCutAndSaysSo) {
  const std::size_t letters = kMaxRecord - kHead.size();
  EXPECT_EQ(recordOf(letters + 1), kHead + std::string(letters, 'x') + "... (1 bytes left out)");
}

// More than the socket takes: a record that the system log refuses goes to the console, and no
// record of it comes.
TEST_F(LongLogTest, whatTheSocketRefusesArrivesCut) {
  constexpr std::size_t kLetters = 5000000;
  const std::size_t leftOut = kLetters + kHead.size() - kMaxRecord;
  const std::string record = recordOf(kLetters);
  EXPECT_THAT(record,
              testing::StartsWith(kHead + std::string(kMaxRecord - kHead.size(), 'x') + "."));
  EXPECT_THAT(record, testing::EndsWith("x... (" + std::to_string(leftOut) + " bytes left out)"));
  EXPECT_EQ(app.waitForLog("JSLOG: behind").priority, LOG_NOTICE);
}

TEST_F(LongLogTest, standardErrorHasItWhole) {
  constexpr std::size_t kLetters = 1000000;
  recordOf(kLetters);
  app.waitForLog("JSLOG: behind");
  host().killAll();
  EXPECT_THAT(host().errors().awaitEnd(),
              testing::HasSubstr("MESSAGE: JSLOG: " + std::string(kLetters, 'x') + "\nMESSAGE: "));
}

}  // namespace
}  // namespace morvik
