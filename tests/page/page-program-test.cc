// The page of the real program, beside a device at work.

#include <fstream>

#include <nlohmann/json.hpp>

#include "devkit/app-client.h"
#include "page-client.h"
#include "support/browser/said.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

class DeviceWithPage : public ::testing::Test {
 protected:
  std::vector<std::string> command(const std::string& page) const {
    return {MORVIK_DEV, "device", "--port=0", page, "--state=" + folder_.path().string()};
  }
  static std::uint16_t devicePort(const test::Program& device) {
    return portOf("http://" + test::saidBehind("listening on ", device) + "/");
  }
  // The memory that a process has of its own and in use, in bytes.
  static std::size_t memoryOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return resident * 4096;
  }

  test::TemporaryFolder folder_;
  Loop loop_;
};

// A sanitizer that is built in keeps freed memory for a while, unless it is told not to.
constexpr const char* kKeepNothingFreed =
    "ASAN_OPTIONS=quarantine_size_mb=0:thread_local_quarantine_size_kb=0";

TEST_F(DeviceWithPage, isAsQuickAndAsSmallWithAPageThatStopsReading) {
  std::vector<std::string> words = command("--page");
  words.insert(words.begin(), {"/usr/bin/env", kKeepNothingFreed});
  test::Program device(words);
  DeafPage deaf(loop_, test::saidBehind("page: ", device));
  AppClient app(loop_, devicePort(device));
  const auto pass = [&app](int hundreds) {
    for (int i = 0; i < hundreds; ++i) {
      // A question and an answer are two events.
      for (int j = 0; j < 50; ++j) app.send(pingRequest(""));
      for (int j = 0; j < 50; ++j) ASSERT_TRUE(app.receive().has_response());
    }
  };
  pass(100);
  const std::size_t before = memoryOf(device.pid());
  pass(900);
  const std::size_t after = memoryOf(device.pid());
  RecordProperty("before", static_cast<int>(before / 1024));
  RecordProperty("after", static_cast<int>(after / 1024));
  EXPECT_LT(after, before + std::size_t{2} * 1024 * 1024) << "before " << before;
}

TEST_F(DeviceWithPage, showsWhatItsApplicationsDo) {
  test::Program device(command("--page"));
  PageClient page(loop_, test::saidBehind("page: ", device));
  const Json hello = page.receive("hello");
  EXPECT_EQ(hello["mode"], "device");
  EXPECT_EQ(hello["applications"], Json::array());
  EXPECT_EQ(hello["stimuli"]["version"], 1);
  auto app = std::make_unique<AppClient>(loop_, devicePort(device));
  EXPECT_EQ(app->ask(startRequest("mine")).response().code(), zeph::OK);
  app->send(lightRequest("mine", "blue"));
  Json view = page.receive("view")["view"];
  while (view.is_object() && view["led"]["color"] != "blue") view = page.receive("view")["view"];
  EXPECT_EQ(view["applications"][0]["interactiveId"], "mine");
  const Json outcome = page.ask({{"type", "stimulus"},
                                 {"id", 1},
                                 {"name", "button"},
                                 {"arguments", {{"type", "SIMPLE"}}},
                                 {"app", 1}});
  EXPECT_EQ(outcome["done"], true) << outcome;
  EXPECT_EQ(app->receive().response().code(), zeph::OK);
  EXPECT_EQ(app->receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  app.reset();
  Json applications = page.receive("applications")["applications"];
  while (applications[0]["state"] != "ended") {
    applications = page.receive("applications")["applications"];
    ASSERT_TRUE(applications.is_array());
  }
  EXPECT_EQ(applications[0]["end"]["sentence"], "The connection ended.");
}

TEST_F(DeviceWithPage, tellsThatAPageAloneRunsNoApplications) {
  test::Program device(command("--page"));
  PageClient page(loop_, test::saidBehind("page: ", device));
  const Json outcome = page.ask({{"type", "act"}, {"action", "restart"}, {"app", "app 1"}});
  EXPECT_EQ(outcome["done"], false);
  EXPECT_THAT(outcome["text"].get<std::string>(), HasSubstr("morvik-dev run"));
}

TEST_F(DeviceWithPage, tellsProgramsTheAddressInAnEvent) {
  std::vector<std::string> words = command("--page");
  words.emplace_back("--events=json");
  test::Program device(words);
  const std::string rest = test::saidBehind("\"event\":\"page\"", device);
  const Json line = Json::parse("{\"event\":\"page\"" + rest);
  EXPECT_TRUE(PageClient(loop_, line["address"].get<std::string>()).isOpen());
}

TEST_F(DeviceWithPage, takesThePortThatIsAskedForAndTellsWhenItIsTaken) {
  test::Program first(command("--page=0"));
  const std::string port = std::to_string(portOf(test::saidBehind("page: ", first)));
  test::Program second(command("--page=" + port));
  second.waitFor("--page takes any free one.\n");
  EXPECT_THAT(second.output(), StartsWith("morvik-dev device: port " + port +
                                          " is in use, perhaps by another page.\n"));
  test::Program third(command("--page=many"));
  third.waitFor("morvik-dev device: a port is a number from 0 to 65535\n");
}

}  // namespace
}  // namespace morvik::test
