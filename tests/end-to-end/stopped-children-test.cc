// Stopping and continuing, as a shell's job control and a debugger do it: the launcher takes none
// of it for an end.
#include <signal.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/system/system-test.h"

namespace morvik::test {
namespace {

class StoppedChildrenTest : public SystemTest {
 protected:
  // Stops and continues a process, waiting each time until it has really happened.
  static void stopAndContinue(pid_t process) {
    kill(process, SIGSTOP);
    waitUntil("a stopped process",
              [&] { return HostProcess::statusOf(process, "State").starts_with("T"); });
    kill(process, SIGCONT);
    waitUntil("a process that goes on",
              [&] { return !HostProcess::statusOf(process, "State").starts_with("T"); });
  }

  static void waitUntilReading(pid_t process) {
    waitUntil("a launcher that reads",
              [&] { return HostProcess::statusOf(process, "State").starts_with("S"); });
  }

  // How often the launcher has said that a child ended.
  int ends() {
    const std::vector<std::string> texts = host().texts(host().pid());
    return static_cast<int>(std::ranges::count(texts, "end process: sigchild"));
  }

  // The launcher takes a line and starts its application.
  void expectLaunches() { EXPECT_EQ(run("log('here');").logged(), "here"); }
};

TEST_F(StoppedChildrenTest, aChildThatStopsAndGoesOnIsNoEnd) {
  Guest guest = invite("log('still here');");
  waitUntilReading(host().pid());
  stopAndContinue(guest.app.pid());
  expectLaunches();
  EXPECT_EQ(ends(), 0);
  guest.grant();
  EXPECT_EQ(guest.app.logged(), "still here");
}

TEST_F(StoppedChildrenTest, aLauncherThatStopsAndGoesOnReadsOn) {
  Guest guest = invite("log('still here');");
  waitUntilReading(host().pid());
  stopAndContinue(host().pid());
  expectLaunches();
  EXPECT_EQ(ends(), 0);
  guest.grant();
  EXPECT_EQ(guest.app.logged(), "still here");
}

// As by Ctrl-Z and `fg`: the whole group.
TEST_F(StoppedChildrenTest, allOfItThatStopsAndGoesOnGoesOn) {
  Guest guest = invite("exit();");
  waitUntilReading(host().pid());
  kill(-host().pid(), SIGSTOP);
  waitUntil("a stopped application",
            [&] { return HostProcess::statusOf(guest.app.pid(), "State").starts_with("T"); });
  kill(-host().pid(), SIGCONT);
  expectLaunches();
  EXPECT_EQ(ends(), 0);
  guest.grant();
  waitUntilReaped(guest.app, 1);
  EXPECT_EQ(ends(), 1);
}

TEST_F(StoppedChildrenTest, anEndBehindAStopIsCountedOnce) {
  Guest guest = invite("");
  waitUntilReading(host().pid());
  stopAndContinue(guest.app.pid());
  kill(guest.app.pid(), SIGKILL);
  waitUntilReaped(guest.app, 0);
  EXPECT_EQ(ends(), 1);
  expectLaunches();
}

// Inherited, as ever.
TEST_F(StoppedChildrenTest, childrenCatchTheSignalToo) {
  const App app = run("log('here');");
  for (const pid_t process : {host().pid(), app.pid()}) {
    const auto caught = std::stoull(HostProcess::statusOf(process, "SigCgt"), nullptr, 16);
    EXPECT_TRUE(caught & (1ULL << (SIGCHLD - 1)));
  }
}

}  // namespace
}  // namespace morvik::test
