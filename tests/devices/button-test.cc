// morvik.button: unknown presses, and that each listener hears every press.
#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

constexpr const char* kPress = "buttonCallback { type: SIMPLE }";

class ButtonTest : public FeatureTest {
 protected:
  void press() { deliver(zephMsg(kPress)); }
};

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

}  // namespace
}  // namespace morvik::test
