// morvik-dev run on a terminal: keys, Ctrl-C, a window that is closed, and 200 restarts.

#include "desk-fixture.h"
#include "pty-program.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

class RunTerminalTest : public DeskTest {
 protected:
  std::unique_ptr<PtyProgram> start(const std::vector<std::string>& words, int columns = 100) {
    return std::make_unique<PtyProgram>(loop_, command(words), columns);
  }
};

TEST_F(RunTerminalTest, restartsAtAKey) {
  write("app", "log('here as ' + launchType.name);");
  const auto run = start({folder_ / "app"});
  run->waitFor("here as plain");
  run->press("r");
  run->waitFor("here as plain");
  run->press("l");
  run->waitFor("p plain  t by tag  v by voice");
  run->press("td0021a\r");
  run->waitFor("here as RFID");
  run->press("r");
  run->waitFor("here as RFID");
}

TEST_F(RunTerminalTest, makesOneRestartOfTenSaves) {
  write("app", "log('version 0');");
  const auto run = start({folder_ / "app"});
  run->waitFor("version 0");
  for (int save = 1; save <= 10; ++save) {
    write("app", "log('version " + std::to_string(save) + "');");
  }
  run->waitFor("version 10");
  EXPECT_EQ(countOf("version ", run->output()), 2);
}

TEST_F(RunTerminalTest, asksWhichApplicationIsMeant) {
  write("one", "log('one is here');");
  write("two", "log('two is here by ' + launchType.text);");
  const auto run = start({folder_ / "one", folder_ / "two"});
  run->waitFor("two is here by undefined");
  run->press("l");
  run->waitFor("launch  1 one  2 two");
  run->press("2vsome words\r");
  run->waitFor("two is here by some_words");
  EXPECT_EQ(countOf("one is here", run->output()), 1);
}

TEST_F(RunTerminalTest, pressesTheButtonAndTakesLinesForTheDevice) {
  write("app",
        interactiveScript("morvik.button.addListener(function (press) { log('press: ' + press); "
                          "return true; }); log('ready');"),
        "<access>button</access>");
  const auto run = start({folder_ / "app"});
  run->waitFor("ready");
  run->press("b");
  run->waitFor("press: SIMPLE");
  run->press(":button TRIPLE\r");
  run->waitFor("press: TRIPLE");
  run->press("?");
  run->waitFor("press the button of the device");
}

TEST_F(RunTerminalTest, givesTheTerminalBackWhenItQuits) {
  write("app", "log('here');");
  const auto run = start({folder_ / "app"});
  run->waitFor("here");
  EXPECT_TRUE(run->givesKeysAtOnce());
  run->press("q");
  EXPECT_EQ(run->waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunTerminalTest, endsEverythingAtCtrlC) {
  write("app", "log('here');");
  const auto run = start({folder_ / "app"});
  run->waitFor("here");
  run->press("\x03");
  EXPECT_EQ(run->waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunTerminalTest, endsEverythingWhenItsWindowIsClosed) {
  write("app", "log('here');");
  const auto run = start({folder_ / "app"});
  run->waitFor("here");
  run->closeTerminal();
  EXPECT_EQ(run->waitForEnd(), 0);
  expectNothingLeft();
}

// A shell with job control goes on with the next command when the tool is stopped.
TEST_F(RunTerminalTest, givesTheTerminalBackWhileItIsStopped) {
  write("app", "log('here as ' + launchType.name);");
  const std::string tool = std::string(MORVIK_DEV) + " run --no-page " + (folder_ / "app");
  PtyProgram shell(loop_, {"/bin/bash", "-m", "-c", tool + "; stty -a; fg >/dev/null; true"});
  shell.waitFor("here as");
  shell.press("\x1a");
  EXPECT_THAT(shell.waitFor("iexten"), HasSubstr(" icanon "));
  EXPECT_TRUE(comesTrue([&] { return shell.givesKeysAtOnce(); }));
  shell.press("r");
  shell.waitFor("here as");
  shell.press("q");
  EXPECT_EQ(shell.waitForEnd(), 0);
}

TEST_F(RunTerminalTest, fitsANarrowTerminal) {
  write("app", "log('words words words words words words words words words');");
  const auto run = start({folder_ / "app"}, 40);
  run->waitFor("words words words words words\033[0m\r\n       \033[1mwords");
}

TEST_F(RunTerminalTest, isPlainWithoutColours) {
  write("app", "log('here');");
  setenv("NO_COLOR", "1", 1);
  const auto run = start({folder_ / "app"});
  unsetenv("NO_COLOR");
  EXPECT_THAT(run->waitFor("log     here"), Not(HasSubstr("\033[")));
}

TEST_F(RunTerminalTest, leavesNothingBehindBy200Restarts) {
  write("app", interactiveScript("log('granted');"));
  const auto run = start({folder_ / "app"});
  run->waitFor("log     ");
  run->waitFor("granted");
  run->press("r");
  run->waitFor("granted");
  // The application alone: its launcher ends at once.
  EXPECT_TRUE(comesTrue([&] { return childrenOf(run->pid()).size() == 1; }));
  const std::size_t descriptors = descriptorsOf(run->pid());
  for (int restart = 0; restart < 200; ++restart) {
    run->press("r");
    run->waitFor("granted");
  }
  EXPECT_TRUE(comesTrue([&] { return childrenOf(run->pid()).size() == 1; }));
  EXPECT_TRUE(comesTrue([&] { return descriptorsOf(run->pid()) <= descriptors; }))
      << descriptorsOf(run->pid()) << " instead of at most " << descriptors;
  run->press("q");
  EXPECT_EQ(run->waitForEnd(), 0);
  expectNothingLeft();
}

}  // namespace
}  // namespace morvik::test
