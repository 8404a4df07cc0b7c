// morvik.button: what a listener hears of a press, and that each hears every press.
#include "support/unit/feature-test.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

constexpr const char* kPress = "buttonCallback { type: SIMPLE }";

class ButtonTest : public FeatureTest {
 protected:
  void press() { deliver(zephMsg(kPress)); }
};

TEST_F(ButtonTest, tellsThePressByName) {
  expectListens("morvik.button.addListener",
                {
                    {"buttonCallback { type: SIMPLE }", {"MESSAGE JSLOG: string SIMPLE"}},
                    {"buttonCallback { type: DOUBLE }", {"MESSAGE JSLOG: string DOUBLE"}},
                    {"buttonCallback { type: TRIPLE }", {"MESSAGE JSLOG: string TRIPLE"}},
                    {"buttonCallback { type: MULTIPLE }", {"MESSAGE JSLOG: string MULTIPLE"}},
                    {"buttonCallback { type: LONG_START }", {"MESSAGE JSLOG: string LONG_START"}},
                    {"buttonCallback { type: LONG_STOP }", {"MESSAGE JSLOG: string LONG_STOP"}},
                    // A press without its required kind counts as the first kind.
                    {"buttonCallback {}", {"MESSAGE JSLOG: string SIMPLE"}},
                    {"earsCallback { type: BLOCKED_LEFT }", {}},
                    {"response { code: OK }", {}},
                    {"buttonCallback { type: SIMPLE } interactiveMode { action: START }", {}},
                });
}

TEST_F(ButtonTest, hearsUntilItsFunctionReturnsSomethingElseThanTrue) {
  expectStaysOnlyForTrue("morvik.button.addListener", kPress);
}

TEST_F(ButtonTest, aPressOfAnUnknownKindCountsAsTheFirst) {
  run("morvik.button.addListener(tell)");
  zeph::ZephMsg message;
  message.mutable_buttoncallback()->mutable_unknown_fields()->AddVarint(1, 99);
  deliver(message);
  EXPECT_THAT(logged(), ElementsAre("string SIMPLE"));
}

TEST_F(ButtonTest, oneListenerThatGoesDoesNoHarmToTheOther) {
  run("morvik.button.addListener(function() { log('a'); });"
      "morvik.button.addListener(function() { log('b'); return true; });"
      "morvik.button.addListener(function() { log('c'); });");
  press();
  EXPECT_THAT(logged(), ElementsAre("a", "b", "c"));
  log.clear();
  press();
  EXPECT_THAT(logged(), ElementsAre("b"));
}

TEST_F(ButtonTest, oneFunctionAddedTwiceHearsTwice) {
  run("morvik.button.addListener(tell); morvik.button.addListener(tell);");
  press();
  EXPECT_THAT(logged(), ElementsAre("string SIMPLE", "string SIMPLE"));
}

TEST_F(ButtonTest, hasOneFunction) {
  EXPECT_EQ(run("Object.keys(morvik.button).join()"), "addListener");
}

}  // namespace
}  // namespace morvik::test
