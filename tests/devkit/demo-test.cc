// script/demo, the first thing that a newcomer runs: an application at work, and nothing left of
// it.
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <filesystem>

#include "program.h"

namespace morvik::devkit::testing {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::StartsWith;

gboolean lookAgain(gpointer /*nothing*/) { return G_SOURCE_CONTINUE; }

class Demo : public ::testing::Test {
 protected:
  // Processes that the demo leaves behind become children of this one.
  Demo() { prctl(PR_SET_CHILD_SUBREAPER, 1); }

  static std::vector<std::string> command(const std::string& option = "") {
    std::vector<std::string> words{SOURCE_DIR "/script/demo", "--programs=" PROGRAMS};
    if (!option.empty()) words.push_back(option);
    return words;
  }

  // The kernel may take a moment to end what was told to end.
  void expectNothingLeft() {
    const GSourceOwned clock(g_timeout_source_new(10));
    g_source_set_callback(clock.get(), lookAgain, nullptr, nullptr);
    g_source_attach(clock.get(), loop_.context());
    EXPECT_TRUE(
        loop_.runUntil([] { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }));
    g_source_destroy(clock.get());
  }

  void expectEndBy(int signal) {
    Program demo(command());
    demo.waitFor("JSLOG: LED fading to blue: TERMINATED");
    demo.signal(signal);
    EXPECT_EQ(demo.waitForEnd(), 0);
    EXPECT_THAT(demo.output(), Not(HasSubstr("ended by itself")));
    expectNothingLeft();
  }

  Loop loop_;
};

TEST_F(Demo, showsBothSidesOfTheConversation) {
  Program demo(command());
  const std::string said = demo.waitFor("the LED is green now");
  EXPECT_THAT(said, StartsWith("A virtual device listens on 127.0.0.1:"));
  EXPECT_THAT(said, HasSubstr("Ctrl-C ends everything."));
  EXPECT_THAT(said, ContainsRegex("\ndevice \\| .* app 1 ->  interactive mode START"));
  EXPECT_THAT(said, ContainsRegex("\ndevice \\| .* app 1 ->  led light red"));
  for (const char* line : {"hello, I am hello and the device listens to me", "ping: OK",
                           "the device says: serial is VM-0000-0001", "LED on, red: OK",
                           "LED fading to blue: OK", "LED fading to blue: TERMINATED"}) {
    EXPECT_THAT(said, HasSubstr("\nhost   | MESSAGE: JSLOG: " + std::string(line) + "\n"));
  }
  demo.signal(SIGTERM);
  EXPECT_EQ(demo.waitForEnd(), 0);
}

TEST_F(Demo, endsByItselfAfterTheTimeThatItIsGiven) {
  EXPECT_EQ(run(command("--seconds=1")).status, 0);
  expectNothingLeft();
}

TEST_F(Demo, endsWithCtrlC) { expectEndBy(SIGINT); }

TEST_F(Demo, endsWhenItIsTerminated) { expectEndBy(SIGTERM); }

TEST_F(Demo, refusesWhatMakesNoSense) {
  for (const char* option : {"--app=nothing", "--app=../apps/hello", "--seconds=0", "--fast"}) {
    const Outcome outcome = run(command(option));
    EXPECT_EQ(outcome.status, 2) << option;
    EXPECT_THAT(outcome.output, HasSubstr("script/demo --help tells what it takes."));
  }
}

TEST_F(Demo, saysThatAProgramIsMissing) {
  const Outcome outcome = run({SOURCE_DIR "/script/demo", "--programs=/nowhere"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("there is no program /nowhere/morvik-dev"));
}

}  // namespace
}  // namespace morvik::devkit::testing
