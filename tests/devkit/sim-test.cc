// morvik-dev sim, and the socket by which it reaches a running tool.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include <nlohmann/json.hpp>

#include "app-client.h"
#include "control/condition.h"
#include "control/control-folder.h"
#include "desk-fixture.h"
#include "device/json.h"
#include "device/stimuli.h"
#include "loop.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

const Json& someView() {
  static const Json view = Json::parse(R"({"led": {"color": "red", "period": 500},
      "ears": {"left": 3}, "dock": {"led": {"color": ""}}, "messages": [{"id": "u"}],
      "applications": [{"interactiveId": "a"}], "work": [], "credentials": {"withheld": false}})");
  return view;
}

TEST(Condition, looksAtAnyValueOfTheView) {
  const std::pair<const char*, bool> cases[] = {
      {"led=red", true},
      {"led=blue", false},
      {"led!=blue", true},
      {"led.color=red", true},
      {"led.period=500", true},
      {"left=3", true},
      {"messages=1", true},
      {"messages.0.id=u", true},
      {"messages.1.id", false},
      {"messages.u", false},
      {"apps=1", true},
      {"interactive", true},
      {"busy", false},
      {"busy=0", true},
      {"dock.led.color=", true},
      {"credentials.withheld", false},
      {"credentials.withheld=false", true},
  };
  for (const auto& [text, does] : cases) {
    const auto condition = conditionIn(text);
    ASSERT_TRUE(condition) << text;
    EXPECT_EQ(holds(*condition, someView()), does) << text;
  }
  EXPECT_FALSE(conditionIn("=red"));
  EXPECT_FALSE(conditionIn(""));
}

TEST(Condition, tellsWhatIsThereInstead) {
  const auto words = [](const char* text) { return unmet(*conditionIn(text), someView()); };
  EXPECT_EQ(words("led=blue"), "led is red, not blue");
  EXPECT_EQ(words("led!=red"), "led is still red");
  EXPECT_EQ(words("led.effect=pulse"), "led.effect is nothing, not pulse");
  EXPECT_EQ(words("busy"), "busy is 0");
  EXPECT_EQ(strangeName(*conditionIn("let=red"), someView()), "the device has no let: perhaps led");
  EXPECT_EQ(strangeName(*conditionIn("led.x=red"), someView()), std::nullopt);
}

// With a run-time folder of the test's own.
class SimTest : public DeskTest {
 protected:
  SimTest() { setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1); }
  ~SimTest() override { unsetenv("XDG_RUNTIME_DIR"); }

  fs::path sockets() const { return folder_.path() / "morvik-dev"; }

  static ProgramResult sim(std::vector<std::string> words) {
    words.insert(words.begin(), {MORVIK_DEV, "sim"});
    return run(words);
  }

  std::vector<std::string> device() const {
    return {MORVIK_DEV, "device", "--port=0", "--state=" + folder_.path().string()};
  }

  // Once it listens, both for applications and for sim.
  static std::uint16_t portOf(const Program& device) {
    const std::string start = "listening on 127.0.0.1:";
    return static_cast<std::uint16_t>(std::stoi(device.waitFor("\n").substr(start.size())));
  }

  bool areListed(std::size_t count) {
    return comesTrue([&] {
      const std::string list = sim({"--list"}).output;
      return static_cast<std::size_t>(std::ranges::count(list, '\n')) == count;
    });
  }
};

TEST_F(SimTest, doesWhatACommandLineOfTheDeviceDoes) {
  const Program program(device());
  AppClient client(loop_, portOf(program));
  EXPECT_EQ(client.ask(startRequest("mine")).response().code(), zeph::OK);
  ASSERT_TRUE(areListed(1));
  EXPECT_EQ(sim({"button", "SIMPLE"}).status, 0);
  EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  EXPECT_EQ(sim({"app 1 button DOUBLE"}).status, 0);
  EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::DOUBLE);
  EXPECT_EQ(sim({"message", "anna", "two words"}).status, 0);
  EXPECT_THAT(sim({"apps"}).output, StartsWith("app 1  interactive"));
  const ProgramResult wrong = sim({"buton", "SIMPLE"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.output,
            "morvik-dev sim: there is no stimulus buton: perhaps button. help lists them.\n");
}

TEST_F(SimTest, waitsForAState) {
  const Program program(device());
  AppClient client(loop_, portOf(program));
  EXPECT_EQ(client.ask(startRequest("mine")).response().code(), zeph::OK);
  ASSERT_TRUE(areListed(1));
  Program waiting({MORVIK_DEV, "sim", "button", "SIMPLE", "--wait", "led=red"});
  EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  EXPECT_EQ(client.ask(lightRequest("mine", "red")).response().code(), zeph::OK);
  EXPECT_EQ(waiting.waitForEnd(), 0);
  const ProgramResult late = sim({"--wait", "led=blue", "--timeout=0"});
  EXPECT_EQ(late.status, 1);
  EXPECT_EQ(late.output, "morvik-dev sim: led is red, not blue, after 0 s\n");
  EXPECT_EQ(sim({"--wait", "leds=blue"}).status, 2);
}

TEST_F(SimTest, watchesUntilNobodyReads) {
  const Program program(device());
  portOf(program);
  ASSERT_TRUE(areListed(1));
  Program watching({"/bin/sh", "-c", std::string(MORVIK_DEV) + " sim --watch | head -n 1"});
  Program dogged({MORVIK_DEV, "sim", "--watch"});
  ASSERT_TRUE(comesTrue([&] {
    sim({"refuse", "ERROR"});
    return watching.output().find('\n') != std::string::npos;
  }));
  EXPECT_THAT(watching.output(), HasSubstr(R"("event":"stimulus","name":"refuse")"));
  EXPECT_TRUE(comesTrue([&] {
    sim({"accept"});
    return dogged.output().find(R"("name":"accept")") != std::string::npos;
  }));
  EXPECT_EQ(watching.waitForEnd(), 0);
  EXPECT_EQ(countOf("\n", watching.output()), 1) << "and no complaint";
}

TEST_F(SimTest, endsWithTheTool) {
  Program program(device());
  portOf(program);
  ASSERT_TRUE(areListed(1));
  Program watching({MORVIK_DEV, "sim", "--watch"});
  ASSERT_TRUE(comesTrue([&] {
    sim({"refuse", "ERROR"});
    return !watching.output().empty();
  }));
  program.signal(SIGTERM);
  EXPECT_EQ(program.waitForEnd(), 0);
  EXPECT_EQ(watching.waitForEnd(), 0);
  EXPECT_TRUE(fs::is_empty(sockets()));
}

TEST_F(SimTest, reachesApplicationsThatRun) {
  const fs::path app =
      write("lamp",
            interactiveScript("morvik.button.addListener(function () {"
                              " morvik.led.light('red'); return true; }); log('ready');"),
            "<access>led</access><access>button</access>");
  Program desk(command({app}));
  desk.waitFor("ready");
  const ProgramResult pressed =
      sim({"--wait", "interactive", "button", "SIMPLE", "--wait", "led=red"});
  EXPECT_EQ(pressed.output, "");
  EXPECT_EQ(pressed.status, 0);
  EXPECT_THAT(sim({"apps"}).output, StartsWith("lamp  "));
  EXPECT_THAT(sim({"--list"}).output, HasSubstr("  run lamp\n"));
}

TEST_F(SimTest, launchesAndEndsApplications) {
  const fs::path app = write("lamp", "log('launched by ' + launchType.name + launchType.id);");
  Program desk(command({app}));
  desk.waitFor("launched by plain");
  EXPECT_EQ(sim({"launch", "lamp", "tag", "d0021a"}).output, "");
  desk.waitFor("launched by RFIDd0021a");
  EXPECT_EQ(sim({"launch", "plain"}).output, "") << "there is one application";
  EXPECT_EQ(sim({"restart", "lamb"}).output,
            "morvik-dev sim: restart: there is no application lamb: perhaps lamp. "
            "Usage: restart [APP]\n");
  EXPECT_EQ(sim({"launch", "lamp", "tag"}).status, 1);
  EXPECT_EQ(sim({"end", "lamp"}).output, "");
  EXPECT_TRUE(comesTrue([] { return sim({"apps"}).output.starts_with("lamp  ended"); }));
}

TEST_F(SimTest, asksWhichOfSeveral) {
  EXPECT_EQ(sim({"state"}).status, 1);
  const Program one(device());
  const Program two(device());
  portOf(one);
  portOf(two);
  ASSERT_TRUE(areListed(2));
  const ProgramResult which = sim({"state"});
  EXPECT_EQ(which.status, 2);
  EXPECT_THAT(which.output, ContainsRegex("choose one by --to=PID\n  [0-9]+  device on port"));
  const std::string number = which.output.substr(which.output.rfind("\n  ") + 3);
  EXPECT_EQ(sim({"state", "--to=" + number.substr(0, number.find(' '))}).status, 0);
  EXPECT_EQ(sim({"state", "--to=1"}).status, 2);
}

TEST_F(SimTest, refusesWhatMakesNoSense) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"--wait", "=red"},
                                                {"--wings"},
                                                {"apps", "--timeout=-1"},
                                                {"apps", "--timeout=1e99"}}) {
    EXPECT_EQ(sim(words).status, 2) << testing::PrintToString(words);
  }
}

TEST_F(SimTest, helpListsTheStimuli) {
  const std::string help = sim({"--help"}).output;
  for (const Stimulus* stimulus : stimuli()) EXPECT_THAT(help, HasSubstr(usageOf(*stimulus)));
}

TEST_F(SimTest, removesTheSocketsOfTheDead) {
  std::string trouble;
  const auto folder = controlFolder(trouble);
  ASSERT_TRUE(folder) << trouble;
  const int stale = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un at{};
  at.sun_family = AF_UNIX;
  const std::string path = *folder / "4711.sock";
  path.copy(at.sun_path, sizeof at.sun_path - 1);
  ASSERT_EQ(bind(stale, reinterpret_cast<const sockaddr*>(&at), sizeof at), 0);
  close(stale);
  std::ofstream(*folder / "notes.txt") << "not a tool's";
  EXPECT_THAT(runningTools(*folder), IsEmpty());
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(*folder / "notes.txt"));
}

TEST_F(SimTest, keepsOthersOut) {
  std::string trouble;
  const auto folder = controlFolder(trouble);
  ASSERT_TRUE(folder);
  const Program program(device());
  portOf(program);
  ASSERT_TRUE(areListed(1));
  EXPECT_EQ(fs::status(*folder).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(runningTools(*folder).front().socket).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(*folder, fs::perms::group_read, fs::perm_options::add);
  EXPECT_FALSE(controlFolder(trouble));
  EXPECT_THAT(trouble, HasSubstr("is not a folder of this user alone"));
  EXPECT_THAT(sim({"state"}).output, HasSubstr("is not a folder of this user alone"));
  fs::permissions(*folder, fs::perms::owner_all);
}

}  // namespace
}  // namespace morvik::test
