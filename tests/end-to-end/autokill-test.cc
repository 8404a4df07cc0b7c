// The ten seconds that an application has to become interactive.
#include <syslog.h>

#include <chrono>
#include <string>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

// Keeps the first run of a script going until the device's grant lies in the socket.
constexpr char kSpin[] = "var end = Date.now() + 300; while (Date.now() < end);";

class AutokillTest : public DeviceTest {
 protected:
  void shortenTimers() { startHost({.shortTimersFrom = 10000}); }
};

TEST_F(AutokillTest, endsAnApplicationThatIsNotInteractiveAfterTenSeconds) {
  apps.app("app", {}, "log('loop soon');");
  app = launch("app");
  const LogRecord armed = app.waitForLog("JSLOG: loop soon");
  EXPECT_EQ(endOf(app, [] {}), exited(255));
  const LogRecord killed = app.waitForLog(kAutokill);
  EXPECT_EQ(killed.priority, LOG_WARNING);
  EXPECT_GE(killed.arrival - armed.arrival, std::chrono::milliseconds(9990));
  EXPECT_LT(killed.arrival - armed.arrival, std::chrono::seconds(15));
}

TEST_F(AutokillTest, countsFromTheEndOfTheFirstRun) {
  shortenTimers();
  apps.app("app", {}, "log('script ends');");
  app = launch("app");
  app.waitUntilEnded();
  const std::string errors = host().errors().await("short-timers: 10000\n");
  EXPECT_LT(errors.find("JSLOG: script ends"), errors.find("short-timers: 10000\n"));
  EXPECT_EQ(app.texts().back(), kAutokill);
}

TEST_F(AutokillTest, doesNotTakeAConnectionForInteractiveMode) {
  shortenTimers();
  connect("morvik.start(function() { log('never'); }, {});");
  app.waitUntilEnded();
  EXPECT_THAT(app.texts(), Not(Contains("JSLOG: never")));
  EXPECT_EQ(app.texts().back(), kAutokill);
}

// An exit() during the first run reaches a loop that is not running yet, and is lost.
TEST_F(AutokillTest, endsAnApplicationThatCalledExitInItsFirstRun) {
  shortenTimers();
  app = run("exit(); log('script goes on'); setTimeout(0, function() { log('loop runs'); });");
  EXPECT_THAT(app.logged(2), testing::ElementsAre("script goes on", "loop runs"));
  app.waitUntilEnded();
  EXPECT_EQ(app.texts().back(), kAutokill);
}

TEST_F(AutokillTest, leavesAnInteractiveApplicationAlone) {
  shortenTimers();
  connect(
      "var ticks = 0; morvik.start(function() {"
      " setTimeout(100, function() { log('tick'); return ++ticks < 4; }); }, {});" +
      std::string(kSpin));
  device.grant(device.receive());
  for (int tick = 1; tick <= 4; ++tick) EXPECT_EQ(app.logged(), "tick");
  EXPECT_TRUE(app.alive());
  EXPECT_THAT(app.texts(), Not(Contains(kAutokill)));
}

TEST_F(AutokillTest, isPassedByAnExitInTheFirstRunThatBecameInteractive) {
  shortenTimers();
  connect(
      "exit(); morvik.start(function() { log('granted'); }, {});"
      "setTimeout(500, function() { log('alive'); });" +
      std::string(kSpin));
  device.grant(device.receive());
  EXPECT_THAT(app.logged(2), testing::ElementsAre("granted", "alive"));
}

TEST_F(AutokillTest, cannotFireWhileTheScriptSpins) {
  shortenTimers();
  app =
      run("setTimeout(0, function() { var end = Date.now() + 400; while (Date.now() < end);"
          " log('spun'); });");
  app.waitUntilEnded();
  const std::vector<std::string> texts = app.texts();
  EXPECT_EQ(texts.rbegin()[0], kAutokill);
  EXPECT_EQ(texts.rbegin()[1], "JSLOG: spun");
}

TEST_F(AutokillTest, endsOnlyTheApplicationThatIsMeant) {
  shortenTimers();
  connect("morvik.start(function() { setTimeout(200, function() { log('alive'); }); }, {});" +
          std::string(kSpin));
  device.grant(device.receive());
  const App other = run("");
  other.waitUntilEnded();
  EXPECT_EQ(app.logged(), "alive");
  waitUntilReaped(other, 1);
}

}  // namespace
}  // namespace morvik::test
