// What the page shows and does, in a real browser.
#include <csignal>

#include "device-page-fixture.h"
#include "looks.h"

namespace morvik::test {
namespace {

using keys::kDown;
using keys::kEnter;
using keys::kUp;

using PageInBrowser = DevicePageTest;

TEST_F(PageInBrowser, showsTheColourThatAnApplicationAsksFor) {
  openPage();
  const auto app = application();
  EXPECT_EQ(app->ask(lightRequest("granted", "blue")).response().code(), zeph::OK);
  expectLed("rgb(0, 0, 255)");
}

TEST_F(PageInBrowser, aClickOnTheButtonReachesAnApplication) {
  const auto app = application();
  openPage();
  driver_.click("#button");
  EXPECT_EQ(app->receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
}

TEST_F(PageInBrowser, twoPagesShowTheSame) {
  openPage();
  openAnotherPage();
  const auto app = application();
  EXPECT_EQ(app->ask(lightRequest("granted", "red")).response().code(), zeph::OK);
  expectLed("rgb(255, 0, 0)");
  driver_.switchTo(window_);
  expectLed("rgb(255, 0, 0)");
}

TEST_F(PageInBrowser, aReloadShowsTheSameAtOnce) {
  const auto app = application();
  openPage();
  EXPECT_EQ(app->ask(lightRequest("granted", "green")).response().code(), zeph::OK);
  expect("document.querySelectorAll('[data-app=\"app 1\"]').length === 1");
  driver_.reload();
  waitUntilGreeted();
  expect("document.getElementById('led').hasAttribute('data-lit')");
  expect("document.querySelectorAll('[data-app=\"app 1\"]').length === 1");
}

TEST_F(PageInBrowser, comesBackWhenTheConnectionWasLost) {
  openPage();
  driver_.run(
      "const real = WebSocket.prototype.send;"
      "WebSocket.prototype.send = function (data) { window.lastSocket = this;"
      "  return real.call(this, data); };");
  const auto app = application();
  expect("window.lastSocket");
  driver_.run("window.lastSocket.close();");
  expect("document.body.dataset.connection !== 'open'");
  waitUntilGreeted();
  EXPECT_EQ(app->ask(lightRequest("granted", "blue")).response().code(), zeph::OK);
  expectLed("rgb(0, 0, 255)");
}

TEST_F(PageInBrowser, tellsThatTheDeviceIsGone) {
  openPage();
  kill(device_.pid(), SIGTERM);
  expectText("[data-connection=lost] #connection-text", "Connection lost");
  EXPECT_EQ(seriousFindings(driver_), nlohmann::json::array());
  driver_.console();  // the browser tells there that nobody listens any more
}

TEST_F(PageInBrowser, canBeUsedWithTheKeyboardAlone) {
  const auto app = application();
  openPage();
  // Every step is a real key: the button is reached, and pressed, without a pointer.
  tabTo("#button");
  driver_.press(kEnter);
  EXPECT_EQ(app->receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  tabTo("#ear-left");
  driver_.press(std::string(kUp) + kUp + kDown);
  expectAttribute("#ear-left", "aria-valuenow", "1");
}

TEST_F(PageInBrowser, aTagIsDraggedToTheReaderAndAway) {
  const auto app = application();
  openPage();
  driver_.click("#tab-tags");
  const std::string tag = driver_.waitFor("document.querySelector('[data-tag]')?.dataset.tag");
  const std::string pill = "[data-tag='" + tag + "']";
  driver_.drag(pill, "#reader");
  zeph::ZephMsg heard = next(*app, "rfidCallback");
  EXPECT_EQ(heard.rfidcallback().id(), tag);
  EXPECT_EQ(heard.rfidcallback().direction(), zeph::RfidCallback::IN);
  expectThere(pill + "[aria-pressed=true]");
  driver_.drag(pill, "#title");
  heard = next(*app, "rfidCallback");
  EXPECT_EQ(heard.rfidcallback().direction(), zeph::RfidCallback::OUT);
  expectThere(pill + "[aria-pressed=false]");
}

TEST_F(PageInBrowser, anEarIsTakenAndTurned) {
  const auto app = application();
  openPage();
  driver_.drag("#turn-left", "#scale-left circle:nth-child(9)");
  expect(attributeOf("#ear-left", "data-held") + " === null");
  const std::string step = driver_.run("return " + attributeOf("#ear-left", "aria-valuenow"));
  EXPECT_NEAR(std::stoi(step), 8, 1);
  zeph::ZephMsg heard = next(*app, "earsCallback");
  while (heard.has_id() && heard.earscallback().step() != std::stoi(step)) {
    heard = next(*app, "earsCallback");
  }
  EXPECT_EQ(heard.earscallback().type(), zeph::EarsCallback::STOP_LEFT);
}

TEST_F(PageInBrowser, asksForNothingFromElsewhere) {
  openPage();
  const auto names =
      driver_.run("return performance.getEntriesByType('resource').map((entry) => entry.name)");
  ASSERT_FALSE(names.empty());
  for (const std::string name : names) EXPECT_THAT(name, ::testing::StartsWith(address_));
}

}  // namespace
}  // namespace morvik::test
