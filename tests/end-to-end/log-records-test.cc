// What one record of the system log holds, and what a script cannot make of it.
#include <syslog.h>

#include <string>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr std::size_t kMaxRecord = 131072;
const std::string kHead = "JSLOG: ";

class LogRecordsTest : public SystemTest {
 protected:
  // What the system log has of a text of so many letters that a script logs.
  std::string recordOf(std::size_t letters) {
    app = run("log('x'.repeat(" + std::to_string(letters) + ")); log('behind');");
    return app.waitForLogThatStarts(kHead + "x").text;
  }

  App app;
};

TEST_F(LogRecordsTest, upToItsLimitARecordIsWhole) {
  const std::size_t letters = kMaxRecord - kHead.size();
  EXPECT_EQ(recordOf(letters), kHead + std::string(letters, 'x'));
}

TEST_F(LogRecordsTest, beyondItARecordIsCutAndSaysSo) {
  const std::size_t letters = kMaxRecord - kHead.size();
  EXPECT_EQ(recordOf(letters + 1), kHead + std::string(letters, 'x') + "... (1 bytes left out)");
}

// More than the socket takes: a record that the system log refuses goes to the console, and no
// record of it comes.
TEST_F(LogRecordsTest, whatTheSocketRefusesArrivesCut) {
  constexpr std::size_t kLetters = 5000000;
  const std::size_t leftOut = kLetters + kHead.size() - kMaxRecord;
  const std::string record = recordOf(kLetters);
  EXPECT_THAT(record,
              testing::StartsWith(kHead + std::string(kMaxRecord - kHead.size(), 'x') + "."));
  EXPECT_THAT(record, testing::EndsWith("x... (" + std::to_string(leftOut) + " bytes left out)"));
  EXPECT_EQ(app.waitForLog("JSLOG: behind").priority, LOG_NOTICE);
}

TEST_F(LogRecordsTest, standardErrorHasItWhole) {
  constexpr std::size_t kLetters = 1000000;
  recordOf(kLetters);
  app.waitForLog("JSLOG: behind");
  host().killAll();
  EXPECT_THAT(host().errors().awaitEnd(),
              testing::HasSubstr("MESSAGE: JSLOG: " + std::string(kLetters, 'x') + "\nMESSAGE: "));
}

// Records that wait for each other must not wait for a script.
TEST_F(LogRecordsTest, aScriptThatSpinsHasSaidAllBefore) {
  Guest guest = invite("log('granted'); morvik.led.light('red'); log('spins'); for (;;);");
  guest.grant();
  guest.app.waitForLog("JSLOG: spins");
  const auto texts = guest.app.texts();
  EXPECT_THAT(texts, testing::IsSupersetOf({"calling interactiveMode function", "JSLOG: granted",
                                            "LED Light: color[red]"}));
  EXPECT_EQ(texts.back(), "JSLOG: spins");
}

// Whoever has a message finds it in the log: nothing that the device does is faster.
TEST_F(LogRecordsTest, theLogHasAMessageBeforeTheDevice) {
  Guest guest = invite("morvik.led.light('red');");
  guest.grant();
  const std::string sent = guest.device.receive().id();
  EXPECT_THAT(host().texts(guest.app.pid()), testing::Contains(testing::HasSubstr(sent)));
}

TEST_F(LogRecordsTest, whatWasSaidSurvivesAKill) {
  Guest guest = invite("morvik.led.light('red');");
  guest.grant();
  const std::string sent = guest.device.receive().id();
  kill(guest.app.pid(), SIGKILL);
  waitUntilReaped(guest.app, 0);
  EXPECT_THAT(host().texts(guest.app.pid()), testing::Contains(testing::HasSubstr(sent)));
}

// A frame that does not go on leaves the application waiting, and what was said of it is there.
TEST_F(LogRecordsTest, aFrameThatStopsHalfWayIsToldOf) {
  Guest guest = invite("log('granted');");
  guest.grant();
  guest.app.waitForLog("JSLOG: granted");
  guest.device.sendBytes(std::string("\0\0\0\10ab", 6));
  guest.app.waitForLogTimes("message received", 2);
}

// A refusal ends the process within the turn that the records of the answer wait for.
TEST_F(LogRecordsTest, anEndWithinATurnLosesNoRecord) {
  Guest guest = invite("log('never');");
  const Exit exit = endOf(guest.app, [&] { guest.device.reply(guest.start, "ERROR"); });
  EXPECT_EQ(exit, exited(1));
  EXPECT_EQ(guest.app.texts().back(), "Interactive mode is not valid: EXIT !");
}

// On standard error, the second line looks like one of the launcher's. The record tells who wrote
// it.
TEST_F(LogRecordsTest, aForgedLineStaysInTheRecordOfItsWriter) {
  app = run("log('x\\nMESSAGE: nbChild 7'); log('behind');");
  EXPECT_EQ(app.waitForLogThatStarts("JSLOG: x").text, "JSLOG: x\nMESSAGE: nbChild 7");
  app.waitForLog("JSLOG: behind");
  EXPECT_THAT(host().texts(host().pid()), testing::Not(testing::Contains("nbChild 7")));
  host().killAll();
  EXPECT_THAT(host().errors().awaitEnd(), testing::HasSubstr("\nMESSAGE: nbChild 7\n"));
}

}  // namespace
}  // namespace morvik::test
