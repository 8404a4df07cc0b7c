// script/demo, the first thing that a newcomer runs: a sample at work on the device, and nothing
// left of it. What `morvik-dev run` does beyond is tested there.

#include "desk-fixture.h"
#include "support/matchers.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

class Demo : public DeskTest {
 protected:
  static std::vector<std::string> command(const std::vector<std::string>& options = {}) {
    std::vector<std::string> words{SOURCE_DIR "/script/demo", "--programs=" PROGRAMS};
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }
};

TEST_F(Demo, showsBothSidesOfTheConversation) {
  Program demo(command());
  const std::string said = demo.waitFor("the LED is green now");
  EXPECT_THAT(said, StartsWith("The device is on this page: http://127.0.0.1:"));
  EXPECT_THAT(said, HasSubstr("Ctrl-C ends everything."));
  EXPECT_THAT(said, ContainsRegex("hello  ->      interactive mode START"));
  EXPECT_THAT(said, ContainsRegex("hello  ->      led light red"));
  for (const char* line : {"hello, I am hello and the device listens to me", "ping: OK",
                           "the device says: serial is VM-0000-0001", "LED on, red: OK",
                           "LED fading to blue: OK", "LED fading to blue: TERMINATED"}) {
    EXPECT_THAT(said, HasSubstr(" hello  log     " + std::string(line) + "\n"));
  }
  demo.signal(SIGTERM);
  EXPECT_EQ(demo.waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(Demo, runsThreeSamplesAtOnce) {
  Program demo(command({"--app=hello", "--app=ear-dance", "--app=talking-clock", "--no-page"}));
  demo.waitFor("hello, I am hello");
  demo.waitFor(" ear-dance     ->      ears");
  demo.waitFor(" talking-clock ->      tts");
  demo.signal(SIGINT);
  EXPECT_EQ(demo.waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(Demo, givesAServerToTheSamplesThatAskOne) {
  Program demo(
      command({"--app=weather", "--app=signed-request", "--app=photo-upload", "--no-page"}));
  demo.waitFor("Home: rain, 11 degrees");
  demo.waitFor("the server says: welcome, signed with OAuth oauth_consumer_key=");
  demo.waitFor("photo = picture.svg, ");
  demo.signal(SIGTERM);
  EXPECT_EQ(demo.waitForEnd(), 0);
}

TEST_F(Demo, endsByItselfAfterTheTimeThatItIsGiven) {
  EXPECT_EQ(run(command({"--seconds=1"})).status, 0);
  expectNothingLeft();
}

TEST_F(Demo, refusesWhatMakesNoSense) {
  for (const char* option : {"--app=nothing", "--app=../apps/hello", "hello"}) {
    const ProgramResult outcome = run(command({option}));
    EXPECT_EQ(outcome.status, 2) << option;
    EXPECT_THAT(outcome.output, HasSubstr("script/demo --help tells what it takes."));
  }
  for (const char* option : {"--seconds=-1", "--fast"}) {
    EXPECT_EQ(run(command({option})).status, 2) << option;
  }
}

TEST_F(Demo, saysThatAProgramIsMissing) {
  const ProgramResult outcome = run({SOURCE_DIR "/script/demo", "--programs=/nowhere"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("there is no program /nowhere/morvik-dev"));
}

}  // namespace
}  // namespace morvik::test
