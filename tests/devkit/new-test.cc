// morvik-dev new: folders that are right from the beginning.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include "desk-fixture.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

std::vector<std::string> templateNames() {
  std::istringstream lines(run({MORVIK_DEV, "new", "--templates"}).output);
  std::vector<std::string> names;
  for (std::string name, rest; lines >> name && std::getline(lines, rest);) names.push_back(name);
  return names;
}

class NewTest : public DeskTest {
 protected:
  ProgramResult makeNew(const std::vector<std::string>& words) {
    std::vector<std::string> all{MORVIK_DEV, "new"};
    all.insert(all.end(), words.begin(), words.end());
    return run(all);
  }
  std::string app_ = folder_ / "my-app";
};

TEST_F(NewTest, makesAnApplicationThatLightsTheLed) {
  EXPECT_EQ(makeNew({app_}).status, 0);
  const ProgramResult check = run({MORVIK_DEV, "check", app_});
  EXPECT_THAT(check.output, IsEmpty());
  EXPECT_EQ(check.status, 0);
  Program run(command({app_}));
  run.waitFor("my-app ->      led light red");
}

// A test of an application that does nothing says so.
TEST_F(NewTest, hasATestThatFailsWithTheApplication) {
  makeNew({app_});
  std::ofstream(app_ + "/main.js") << "setTimeout(0, exit);";
  const ProgramResult outcome = run({MORVIK_DEV, "test", app_});
  EXPECT_THAT(outcome.output, HasSubstr("my-app ended after 0 ms"));
  EXPECT_EQ(outcome.status, 1);
}

TEST_F(NewTest, everySampleIsATemplateThatPassesCheck) {
  std::vector<std::string> check{MORVIK_DEV, "check"};
  std::set<std::string> samples;
  for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/apps")) {
    samples.insert(entry.path().filename());
  }
  for (const std::string& name : templateNames()) {
    EXPECT_EQ(samples.erase(name), 1U) << name;
    check.push_back(folder_ / ("new-" + name));
    EXPECT_EQ(makeNew({check.back(), "--template=" + name}).status, 0) << name;
    EXPECT_THAT(contentOf(check.back() + "/main.js"), StartsWith("// new-" + name + ": "));
  }
  EXPECT_THAT(samples, IsEmpty());
  EXPECT_THAT(run(check).output, IsEmpty());
}

// Every sample has a test, and a new application from it passes that at once, under its own name.
class NewTemplates : public NewTest, public testing::WithParamInterface<std::string> {};

TEST_P(NewTemplates, passTheirTests) {
  makeNew({app_, "--template=" + GetParam()});
  const ProgramResult outcome = run({MORVIK_DEV, "test", app_});
  EXPECT_THAT(outcome.output, HasSubstr("\nok 1 - "));
  EXPECT_EQ(outcome.status, 0) << outcome.output;
}

INSTANTIATE_TEST_SUITE_P(Each, NewTemplates,
                         testing::Values("hello", "button-game", "dock-tour", "ear-dance",
                                         "led-rainbow", "mailbox", "photo-booth", "photo-upload",
                                         "radio", "rfid-greeter", "serial-echo", "signed-request",
                                         "talking-clock", "two-device-call", "voice-menu",
                                         "weather"),
                         [](const auto& name) {
                           std::string letters = name.param;
                           std::ranges::replace(letters, '-', '_');
                           return letters;
                         });

TEST_F(NewTest, replacesNothing) {
  fs::create_directory(app_);
  EXPECT_EQ(makeNew({app_}).status, 0);
  std::ofstream(app_ + "/main.js") << "mine";
  const ProgramResult outcome = makeNew({app_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("is there already"));
  EXPECT_EQ(contentOf(app_ + "/main.js"), "mine");
}

TEST_F(NewTest, refusesNamesThatALaunchLineCannotCarry) {
  for (const char* name : {"my app", "..", "-app", "a;b", "a\tb"}) {
    const ProgramResult outcome = makeNew({"--", folder_ / name});
    EXPECT_EQ(outcome.status, 1) << name;
    EXPECT_THAT(outcome.output, HasSubstr("is no name for an application")) << name;
  }
}

TEST_F(NewTest, refusesWhatMakesNoSense) {
  EXPECT_EQ(makeNew({}).status, 2);
  EXPECT_EQ(makeNew({"a", "b"}).status, 2);
  EXPECT_THAT(makeNew({app_, "--template=none"}).output, HasSubstr("there is no template none"));
  EXPECT_EQ(makeNew({app_, "--template=none"}).status, 2);
  EXPECT_EQ(makeNew({"/proc/my-app"}).status, 1);
}

}  // namespace
}  // namespace morvik::test
