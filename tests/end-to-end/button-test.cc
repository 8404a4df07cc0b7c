// morvik.button, and with it how any feature's listeners are walked.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class ButtonTest : public FeatureTest {
 protected:
  ButtonTest() : FeatureTest("button") {}

  void press(zeph::ButtonCallback::Type type = zeph::ButtonCallback::SIMPLE) {
    zeph::ZephMsg message = newMessage();
    message.mutable_buttoncallback()->set_type(type);
    device.send(message);
  }
};

TEST_F(ButtonTest, addListenerIsLogged) {
  app = run("log(morvik.button.addListener(function() {}));", access());
  EXPECT_EQ(app.logged(), "undefined");
  EXPECT_EQ(app.waitForLogThatStarts("adding listener : [0x").priority, LOG_DEBUG);
  EXPECT_THAT(app.texts(), Contains("adding listener : [%p]"));
}

// A message that is none of its own lets a listener stay, whatever its function returns.
TEST_F(ButtonTest, otherMessagesPassAListenerBy) {
  connect("morvik.button.addListener(function(type) { log(type); });", access());
  zeph::ZephMsg other = newMessage();
  other.mutable_ping();
  device.send(other);
  press(zeph::ButtonCallback::DOUBLE);
  EXPECT_EQ(app.logged(), "DOUBLE");
  press();
  settle();
  EXPECT_THAT(receptions().end()[-2], ElementsAre()) << "it had gone";
}

// One that is added while the list is walked begins with a later message or this one, and nobody
// misses a press or hears it twice.
TEST_F(ButtonTest, listenersMayBeAddedByListeners) {
  connect(
      "var left = 30; function again(type) {"
      "  if (--left > 0) morvik.button.addListener(again); }"
      "morvik.button.addListener(again);"
      "morvik.button.addListener(function(type) { log(type + ' ' + left); return true; });",
      access());
  press();
  const std::string first = app.logged();
  EXPECT_THAT(first, StartsWith("SIMPLE "));
  press(zeph::ButtonCallback::DOUBLE);
  const std::string second = app.logged();
  EXPECT_THAT(second, StartsWith("DOUBLE "));
  EXPECT_LT(std::stoi(second.substr(7)), std::stoi(first.substr(7)));
  for (int i = 0; i < 30; ++i) press(zeph::ButtonCallback::TRIPLE);
  for (int i = 0; i < 29; ++i) app.logged();
  EXPECT_EQ(app.logged(), "TRIPLE 0");
}

TEST_F(ButtonTest, twoListenersOfOneFunctionBothHear) {
  connect(
      "var calls = 0; function heard() { log(++calls); return calls < 3; }"
      "morvik.button.addListener(heard); morvik.button.addListener(heard);",
      access());
  press();
  EXPECT_THAT(app.logged(2), ElementsAre("1", "2"));
  press();
  EXPECT_THAT(app.logged(2), ElementsAre("3", "4"));
  press();
  settle();
  EXPECT_THAT(receptions().end()[-2], ElementsAre()) << "both had gone";
}

TEST_F(ButtonTest, aListenerMaySendRequests) {
  interactive(
      "morvik.button.addListener(function(type) { morvik.led.light(type, log); return true; });",
      {"button", "led"});
  press();
  EXPECT_EQ(receiveAndReply().led().light().color(), "SIMPLE");
  EXPECT_EQ(app.logged(), "OK");
  press(zeph::ButtonCallback::LONG_STOP);
  EXPECT_EQ(receiveAndReply("BUSY").led().light().color(), "LONG_STOP");
  EXPECT_EQ(app.logged(), "BUSY");
}

}  // namespace
}  // namespace morvik::test
