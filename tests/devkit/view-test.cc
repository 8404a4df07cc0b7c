// The picture of the device, in records and in JSON.
#include "device/view.h"

#include <set>

#include <nlohmann/json.hpp>

#include "bench.h"
#include "every-stimulus.h"
#include "json-blocks.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

// What is made anew each time gets the value that the page has.
void normalise(Json& view) {
  for (Json& work : view["work"]) work["request"] = "3f2a";
  for (Json& message : view["messages"]) {
    message["id"] = "u";
    message["date"] = 1767225600;
  }
}

// Something of everything.
void liven(Bench& bench) {
  for (const char* line :
       {"contact anna firstname=Anna lastname=B alias=a object=1:Lamp", "message anna hi header=h",
        "credentials facebookToken=SECRET", "app 2 refuse BUSY ears 3", "delay 700 ping",
        "app 1 pieces 3", "ear RIGHT 3"}) {
    EXPECT_TRUE(stimulate(bench.device, line).done) << line;
  }
  EXPECT_TRUE(stimulate(bench.device, "app 1 pieces 3").done);
  for (const char* command :
       {"led { light { color: 'red' } }", "led { fade { color: 'blue' period: 500 } }",
        "ears { left: 5 }", "tts { action: START text: 'hello' lang: 'en' }",
        "asr { dictionary: 'yes|no' lang: 'en' }", "multimedia { play { url: 'a.mp3' } }",
        "multimedia { record { url: 'note' } }", "webcam { photo: 'here' }",
        "serial { open { port: '/dev/ttyS1' baud: 9600 } }",
        "serialCallback { readline { port: '/dev/ttyS1' data: '' base: 'h' } }",
        "serial { write { port: '/dev/ttyS1' data: 'ab' } }", "m2m { call { address: 'app2' } }"}) {
    bench.command(command);
  }
  for (const char* line : {"serial /dev/ttyS1 cd", "dock 1 0", "app 1 pieces 3"}) {
    EXPECT_TRUE(stimulate(bench.device, line).done) << line;
  }
}

TEST(View, isWhatThePageShows) {
  Bench bench;
  liven(bench);
  bench.pass(milliseconds(300));
  Json view = toJson(viewOf(bench.device));
  normalise(view);
  Json page;
  for (const std::string& block : jsonBlocks(SOURCE_DIR "/docs/device-json.md")) {
    Json read = Json::parse(block, nullptr, false);
    if (!read.is_discarded() && read.contains("applications")) page = read;
  }
  EXPECT_EQ(view.dump(2), page.dump(2));
}

TEST(View, hasAllItsPartsFromTheStart) {
  HeldScheduler scheduler;
  KeptOutlet outlet;
  const Device device(outlet, scheduler);
  Bench bench;
  liven(bench);
  std::set<std::string> atFirst;
  std::set<std::string> later;
  const Json fresh = toJson(viewOf(device));
  const Json used = toJson(viewOf(bench.device));
  for (const auto& [part, value] : fresh.items()) atFirst.insert(part);
  for (const auto& [part, value] : used.items()) later.insert(part);
  EXPECT_EQ(atFirst, later);
}

TEST(View, isACopy) {
  Bench bench;
  const DeviceView before = viewOf(bench.device);
  bench.command("led { light { color: 'red' } }");
  EXPECT_EQ(before.state.led.color, "");
  EXPECT_EQ(viewOf(bench.device).state.led.color, "red");
}

TEST(View, holdsNoSecret) {
  Bench bench;
  liven(bench);
  bench.command(
      "m2m { account { sipId: 'ann' sipDomain: 'home' sipPassword: 'SECRET' stunServer: 's' } }");
  EXPECT_THAT(toJson(viewOf(bench.device)).dump(), Not(::testing::HasSubstr("SECRET")));
}

TEST(View, takesTextsThatAreNoUtf8) {
  Bench bench;
  zeph::ZephMsg message;
  message.set_id("x");
  message.set_interactiveid("granted");
  message.mutable_led()->mutable_light()->set_color("r\xff");
  receive(bench.device, 1, message);
  EXPECT_THAT(textOf(toJson(viewOf(bench.device))), ::testing::HasSubstr("r\xef\xbf\xbd"));
}

// The parts whose values differ, and the work, which Began and Ended tell of.
std::set<std::string> differences(const Json& before, const Json& after) {
  std::set<std::string> parts;
  for (const auto& [part, value] : after.items()) {
    if (part != "time" && before[part] != value) parts.insert(part);
  }
  return parts;
}

std::set<std::string> toldOf(const KeptEvents& events) {
  std::set<std::string> parts;
  for (const Changed& changed : events.of<Changed>()) parts.insert(changed.part);
  if (!events.of<Began>().empty() || !events.of<Ended>().empty()) parts.insert("work");
  return parts;
}

// Whoever keeps a picture by the events alone is to have a true one.
void expectAllTold(Bench& bench, const Json& before, const std::string& what) {
  const Json after = toJson(viewOf(bench.device));
  const std::set<std::string> told = toldOf(bench.events);
  for (const std::string& part : differences(before, after)) {
    EXPECT_TRUE(told.contains(part)) << part << " after " << what;
  }
  for (const std::string& part : told) EXPECT_TRUE(after.contains(part)) << part;
}

TEST(View, changesOfStimuliAreTold) {
  for (const StimulusRow& row : everyStimulus()) {
    Bench bench;
    if (*row.before != '\0') bench.command(row.before);
    const Json before = toJson(viewOf(bench.device));
    bench.events.all.clear();
    stimulate(bench.device, row.line);
    expectAllTold(bench, before, row.line);
  }
}

TEST(View, changesOfCommandsAndTheirEndsAreTold) {
  for (const char* command :
       {"led { pulse { color: 'red' period: 9 pulse: 3 } }", "ears { left: 3 }",
        "dock { led { fade { color: 'red' period: 9 } } }", "dock { move { cmd: UP } }",
        "tts { action: START text: 'a' }", "asr { dictionary: 'a' }",
        "multimedia { play { url: 'a' } }", "multimedia { record { url: 'a' } }",
        "webcam { photo: 'x' }", "serial { open { port: 'p' baud: 9 } }", "serial { close {} }",
        "serialCallback { readline { port: 'p' data: '' base: 'h' } }",
        "m2m { call { address: 'app2' } }", "interactiveMode { action: STOP }",
        "m2m { account { sipId: 'a' sipDomain: '' sipPassword: '' stunServer: '' } }",
        "morvikMessageQuery { action: NEW message { header { to { uuid: 'u' } } } }"}) {
    Bench bench;
    const Json before = toJson(viewOf(bench.device));
    bench.events.all.clear();
    bench.command(command);
    expectAllTold(bench, before, command);
    const Json during = toJson(viewOf(bench.device));
    bench.events.all.clear();
    bench.pass(std::chrono::minutes(1));
    expectAllTold(bench, during, std::string("the end of ") + command);
  }
}

TEST(View, changesByFaultsThatAreUsedUpAreTold) {
  Bench bench;
  for (const char* line : {"refuse BUSY", "pieces 3"}) {
    stimulate(bench.device, line);
    const Json before = toJson(viewOf(bench.device));
    bench.events.all.clear();
    bench.command("ping {}");
    expectAllTold(bench, before, line);
  }
}

TEST(View, theComingAndGoingOfApplicationsIsTold) {
  Bench bench;
  const Json before = toJson(viewOf(bench.device));
  bench.device.applicationCame(3);
  expectAllTold(bench, before, "came");
  const Json during = toJson(viewOf(bench.device));
  bench.events.all.clear();
  bench.device.applicationLeft(3);
  expectAllTold(bench, during, "left");
  stimulate(bench.device, "app 2 pieces 3");
  const Json awaited = toJson(viewOf(bench.device));
  bench.events.all.clear();
  bench.device.applicationLeft(2);
  expectAllTold(bench, awaited, "left before the message that was to come in pieces");
}

}  // namespace
}  // namespace morvik::test
