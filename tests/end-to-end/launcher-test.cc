// The launcher: what it reads, starts, refuses and reaps, and what it says about it.
#include <signal.h>
#include <sys/wait.h>
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kRefusal[] = "too many mvm ignore request\n";
constexpr char kBreak[] = "MorvikVM buffer:vide -> break";

class LauncherTest : public SystemTest {
 protected:
  static void sendHome(Guest& guest) {
    guest.grant();
    guest.app.waitUntilEnded();
  }

  void waitForOutput(std::size_t refusals) {
    std::string expected;
    while (refusals-- > 0) expected += kRefusal;
    host().output().await(expected);
  }
};

TEST_F(LauncherTest, startsWithTwoMessagesAndReads) {
  startHost({.forkFails = true});
  host().line("hello bob");
  host().waitForLog("nbChild 0");
  EXPECT_THAT(host().texts(host().pid()),
              ElementsAre("MorvikVM started...", "params: " + apps.path(),
                          "MorvikVM buffer:hello bob\n : len:10", "setCmdLine hello bob",
                          "APP NAME hello", "nbChild 0"));
}

TEST_F(LauncherTest, everyRecordCarriesIdentPidFacilityAndLevel) {
  host().line("hello RFID kitchen");
  host().waitForLog("nbChild 0");
  const std::vector<std::pair<std::string, int>> expected{
      {"MorvikVM started...", LOG_NOTICE},
      {"params: " + apps.path(), LOG_NOTICE},
      {"MorvikVM buffer:hello RFID kitchen\n : len:19", LOG_NOTICE},
      {"setCmdLine hello RFID kitchen", LOG_DEBUG},
      {"APP NAME hello", LOG_DEBUG},
      {"LAUNCH_TYPE RFID", LOG_DEBUG},
      {"INSTANCE_NAME kitchen", LOG_DEBUG},
      {"nbChild 0", LOG_NOTICE}};
  const std::vector<LogRecord> records = host().log();
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(records.at(i).text, expected[i].first);
    EXPECT_EQ(records.at(i).priority, expected[i].second) << records.at(i).text;
    EXPECT_EQ(records.at(i).ident, "MorvikVM");
    EXPECT_EQ(records.at(i).pid, host().pid());
    EXPECT_EQ(records.at(i).facility, LOG_LOCAL1);
  }
}

// The second field's end is logged, its lack is not: odd on purpose.
TEST_F(LauncherTest, aLineIsSplitAtItsFirstTwoBlanks) {
  startHost({.forkFails = true});
  const std::vector<std::vector<std::string>> rows{
      {"clock"},
      {"clock ASR;one", "APP NAME clock"},
      {"clock RFID the  big one ", "APP NAME clock", "LAUNCH_TYPE RFID",
       "INSTANCE_NAME the  big one "},
      {" clock", "APP NAME "},
      {"clock  bob", "APP NAME clock", "LAUNCH_TYPE ", "INSTANCE_NAME bob"},
      {"clock RFID ", "APP NAME clock", "LAUNCH_TYPE RFID", "INSTANCE_NAME "},
      {"\"a b\" c", "APP NAME \"a", "LAUNCH_TYPE b\"", "INSTANCE_NAME c"}};
  std::vector<std::string> expected;
  for (const std::vector<std::string>& row : rows) {
    const std::string& line = row.front();
    host().line(line);
    expected.push_back("MorvikVM buffer:" + line + "\n : len:" + std::to_string(line.size() + 1));
    expected.push_back("setCmdLine " + line);
    expected.insert(expected.end(), row.begin() + 1, row.end());
  }
  host().leaveApps();
  std::vector<std::string> texts = host().texts(host().pid());
  std::erase_if(texts, [](const std::string& text) { return text.starts_with("nbChild "); });
  ASSERT_GT(texts.size(), 4U);
  EXPECT_THAT(std::vector(texts.begin() + 2, texts.end() - 2), ElementsAreArray(expected));
}

TEST_F(LauncherTest, aNewlineAloneStopsItAndLeavesTheApplicationsRunning) {
  Guest guest = invite("exit();");
  host().line("");
  EXPECT_EQ(host().waitForExit(), exited(0));
  EXPECT_EQ(host().texts(host().pid()).back(), kBreak);
  host().waitForLog("MorvikVM buffer:\n : len:1", host().pid());
  EXPECT_EQ(host().waitForLog(kBreak).priority, LOG_NOTICE);
  guest.grant();
  EXPECT_EQ(HostProcess::waitForExit(guest.app.pid()), exited(0));
}

TEST_F(LauncherTest, oneCharacterWithoutANewlineStopsIt) {
  host().write("x");
  host().closeInput();
  EXPECT_EQ(host().waitForExit(), exited(0));
  EXPECT_THAT(host().texts(host().pid()),
              ElementsAre("MorvikVM started...", "params: " + apps.path(),
                          "MorvikVM buffer:x : len:1", kBreak));
}

TEST_F(LauncherTest, oneCharacterWithANewlineIsAnApplication) {
  apps.app("x", {}, "log('here')");
  App app = launch("x");
  EXPECT_EQ(app.logged(), "here");
  host().waitForLog("MorvikVM buffer:x\n : len:2", host().pid());
}

TEST_F(LauncherTest, endOfInputAtTheVeryFirstReadStopsIt) {
  startHost({.input = "/dev/null"});
  EXPECT_EQ(host().waitForExit(), exited(0));
  EXPECT_THAT(host().texts(host().pid()),
              ElementsAre("MorvikVM started...", "params: " + apps.path(),
                          "MorvikVM buffer: : len:0", kBreak));
}

TEST_F(LauncherTest, theFourthLineIsParsedLoggedAndRefused) {
  std::vector<Guest> guests;
  for (int i = 0; i < 3; ++i) guests.push_back(invite("exit();"));
  host().line("fourth RFID bob");
  waitForOutput(1);
  host().line("fifth");
  waitForOutput(2);
  EXPECT_EQ(host().output().soFar(), std::string(kRefusal) + kRefusal);
  std::vector<std::string> texts = host().texts(host().pid());
  texts.erase(texts.begin(),
              std::ranges::find(texts, "MorvikVM buffer:fourth RFID bob\n : len:16"));
  EXPECT_THAT(
      texts, ElementsAre("MorvikVM buffer:fourth RFID bob\n : len:16", "setCmdLine fourth RFID bob",
                         "APP NAME fourth", "LAUNCH_TYPE RFID", "INSTANCE_NAME bob", "nbChild 3",
                         "MorvikVM buffer:fifth\n : len:6", "setCmdLine fifth", "nbChild 3"));
  for (const LogRecord& record : host().log())
    EXPECT_THAT(record.text, Not(HasSubstr("too many mvm"))) << "it is not logged";
}

TEST_F(LauncherTest, aReapedApplicationFreesItsPlace) {
  std::vector<Guest> guests;
  for (int i = 0; i < 3; ++i) guests.push_back(invite("exit();"));
  host().line("refused");
  waitForOutput(1);
  sendHome(guests[1]);
  const LogRecord reaped = waitUntilReaped(guests[1].app, 2);
  EXPECT_EQ(reaped.priority, LOG_DEBUG);
  EXPECT_EQ(host().waitForLog("end process: sigchild", host().pid()).priority, LOG_DEBUG);
  Guest next = invite("exit();");
  sendHome(next);
  waitUntilReaped(next.app, 2);
  sendHome(guests[0]);
  waitUntilReaped(guests[0].app, 1);
  EXPECT_EQ(host().output().soFar(), kRefusal);
}

TEST_F(LauncherTest, childrenDoNotPrintTheRefusalAgain) {
  std::vector<Guest> guests;
  for (int i = 0; i < 3; ++i) guests.push_back(invite("exit();"));
  host().line("refused");
  waitForOutput(1);
  sendHome(guests[0]);
  waitUntilReaped(guests[0].app, 2);
  guests.push_back(invite("exit();"));
  sendHome(guests.back());
  waitUntilReaped(guests.back().app, 2);
  host().line("nobody at home");
  host().waitForLogTimes("end process: sigchild", 3);
  host().killAll();
  EXPECT_EQ(host().output().awaitEnd(), kRefusal);
}

// One signal may stand for two ended children, and each signal counts for one: the count then
// stays one too high, on purpose.
TEST_F(LauncherTest, twoEndsInOneSignalAreCountedOnce) {
  Guest one = invite("exit();");
  Guest two = invite("exit();");
  kill(host().pid(), SIGSTOP);
  siginfo_t info{};
  waitid(P_PID, static_cast<id_t>(host().pid()), &info, WSTOPPED);
  sendHome(one);
  sendHome(two);
  kill(host().pid(), SIGCONT);
  host().waitForLog("one reaped", [](const LogRecord& record) {
    return record.text.starts_with("end process: ") && record.text.ends_with(" nbChild 1");
  });
  host().line("nobody at home");
  host().waitForLog("setCmdLine nobody at home");
  host().waitForLogTimes("nbChild 1", 2);
}

TEST_F(LauncherTest, aForkThatFailsIsSilentAndCostsAPlace) {
  startHost({.forkFails = true});
  for (int count = 0; count < 3; ++count) {
    host().line("app");
    host().waitForLog("nbChild " + std::to_string(count));
  }
  host().line("app");
  waitForOutput(1);
  EXPECT_THAT(
      host().texts(host().pid()),
      ElementsAre("MorvikVM started...", "params: " + apps.path(), "MorvikVM buffer:app\n : len:4",
                  "setCmdLine app", "nbChild 0", "MorvikVM buffer:app\n : len:4", "setCmdLine app",
                  "nbChild 1", "MorvikVM buffer:app\n : len:4", "setCmdLine app", "nbChild 2",
                  "MorvikVM buffer:app\n : len:4", "setCmdLine app", "nbChild 3"));
}

// End of input is not noticed: what the buffer holds is a line again, without its newline.
TEST_F(LauncherTest, endOfInputLaunchesTheLastLineAgainAndThenRefusesWithoutEnd) {
  apps.app("app", {}, "");
  host().write("app\n");
  host().closeInput();
  waitForOutput(100);
  host().killAll();
  const std::vector<std::string> texts = host().texts(host().pid());
  EXPECT_EQ(std::ranges::count(texts, "MorvikVM buffer:app\n : len:4"), 1);
  EXPECT_EQ(std::ranges::count(texts, "nbChild 0"), 1);
  EXPECT_EQ(std::ranges::count(texts, "nbChild 1"), 1);
  EXPECT_EQ(std::ranges::count(texts, "nbChild 2"), 1);
  EXPECT_GE(std::ranges::count(texts, "MorvikVM buffer:app : len:3"), 99 + 2);
  EXPECT_GE(std::ranges::count(texts, "nbChild 3"), 99);
}

// A child that ends must not move the launcher's place in the file, and even in the busy loop
// that follows the end of input, ended children are reaped and their places taken again.
TEST_F(LauncherTest, linesOfAFileAreReadOnceWhateverItsChildrenDo) {
  apps.app("leaves", {}, "setTimeout(0, function() { exit(); });");
  for (const std::string app : {"leaves", "has-no-folder"}) {
    SCOPED_TRACE(app);
    apps.file("input", app, app + "\n");
    startHost({.input = apps.path() + "/input/" + app});
    host().waitForLogTimes("end process: sigchild", 8);
    host().killAll();
    const std::vector<std::string> texts = host().texts(host().pid());
    const std::string first = "MorvikVM buffer:" + app + "\n : len:";
    EXPECT_EQ(std::ranges::count(texts, first + std::to_string(app.size() + 1)), 1);
  }
}

TEST_F(LauncherTest, aFileOfLinesIsWorkedThroughAndItsEmptyLineStops) {
  apps.app("one", {}, "");
  apps.app("two", {}, "");
  apps.file("input", "lines", "one\ntwo\n\nthree\n");
  startHost({.input = apps.path() + "/input/lines"});
  EXPECT_EQ(host().waitForExit(), exited(0));
  host().waitForLog("running app: one");
  host().waitForLog("running app: two");
  EXPECT_EQ(host().texts(host().pid()).back(), kBreak);
}

TEST_F(LauncherTest, aLongLineIsReadInPieces) {
  const std::string piece(4094, 'a');
  host().line(piece + "tail RFID bob");
  host().waitForLog("nbChild 1");
  host().waitForLog("MorvikVM buffer:" + piece + " : len:4094", host().pid());
  host().waitForLog("setCmdLine " + piece, host().pid());
  host().waitForLog("MorvikVM buffer:tail RFID bob\n : len:14", host().pid());
  host().waitForLog("APP NAME tail", host().pid());
}

TEST_F(LauncherTest, aLineOfTheBuffersLengthLeavesItsNewlineAndThatStops) {
  const std::string line(4094, 'b');
  host().line(line);
  EXPECT_EQ(host().waitForExit(), exited(0));
  const std::vector<std::string> texts = host().texts(host().pid());
  EXPECT_THAT(texts, testing::Contains("MorvikVM buffer:" + line + " : len:4094"));
  EXPECT_THAT(texts, testing::Contains("MorvikVM buffer:\n : len:1"));
  EXPECT_EQ(texts.back(), kBreak);
}

TEST_F(LauncherTest, aLineOneShorterIsReadWhole) {
  const std::string line(4093, 'c');
  host().line(line);
  host().line("next");
  host().waitForLog("MorvikVM buffer:next\n : len:5");
  host().waitForLog("MorvikVM buffer:" + line + "\n : len:4094", host().pid());
}

TEST_F(LauncherTest, aShortLineBehindALongOneIsNotMixedWithIt) {
  host().line("a-long-name-of-an-application");
  host().line("ab");
  host().waitForLog("MorvikVM buffer:ab\n : len:3", host().pid());
  host().waitForLog("setCmdLine ab", host().pid());
}

TEST_F(LauncherTest, aZeroByteEndsALine) {
  using std::string_literals::operator""s;
  host().write("ab\0cd\n"s);
  host().waitForLog("MorvikVM buffer:ab : len:2", host().pid());
  host().waitForLog("setCmdLine ab", host().pid());
}

TEST_F(LauncherTest, manyApplicationsMayFollowEachOther) {
  apps.app("app", {}, "setTimeout(0, function() { exit(); });");
  for (int i = 0; i < 20; ++i) waitUntilReaped(launch("app"), 0);
  EXPECT_EQ(std::ranges::count(host().texts(host().pid()), "nbChild 0"), 20);
}

TEST_F(LauncherTest, anApplicationHasNoStandardInputAndNoBlockedSignals) {
  Guest guest = invite("exit();");
  const std::string process = "/proc/" + std::to_string(guest.app.pid());
  EXPECT_EQ(std::filesystem::read_symlink(process + "/fd/0"), "/dev/null");
  EXPECT_EQ(HostProcess::statusOf(guest.app.pid(), "SigBlk"), "0000000000000000");
}

TEST_F(LauncherTest, anApplicationHasTheHandlerOfChildrensEnds) {
  Guest guest = invite("exit();");
  const unsigned long caught =
      std::stoul(HostProcess::statusOf(guest.app.pid(), "SigCgt"), nullptr, 16);
  EXPECT_NE(caught & (1UL << (SIGCHLD - 1)), 0U) << caught;
}

TEST_F(LauncherTest, launcherAndApplicationsHaveOneThreadEach) {
  Guest guest = invite("exit();");
  EXPECT_EQ(HostProcess::statusOf(host().pid(), "Threads"), "1");
  EXPECT_EQ(HostProcess::statusOf(guest.app.pid(), "Threads"), "1");
}

}  // namespace
}  // namespace morvik::test
