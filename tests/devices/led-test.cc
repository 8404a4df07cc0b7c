// morvik.led: exceptions of the engine, and answers heard with the function itself as `this`.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class LedTest : public FeatureTest {};

TEST_F(LedTest, aConversionThatTheEngineRefusesReachesTheScriptAndNothingIsSent) {
  becomeInteractive();
  EXPECT_EQ(run("morvik.led.light(Symbol('s'))"),
            "throws: TypeError: Cannot convert a Symbol value to a string");
  EXPECT_FALSE(sent());
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(LedTest, everyAnswerReachesTheFunction) {
  becomeInteractive();
  run("morvik.led.light('red', function(code) { log(code + (this === arguments.callee)); })");
  const auto request = sent();
  ASSERT_TRUE(request);
  EXPECT_THAT(logged(), ElementsAre());
  respond(*request, zeph::OK);
  zeph::ZephMsg event;
  event.mutable_event()->set_code(zeph::TERMINATED);
  answer(*request, event);
  EXPECT_THAT(logged(), ElementsAre("OKtrue", "TERMINATEDtrue"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "Event: LED"));
}

TEST_F(LedTest, theFunctionsResultDoesNotMatter) {
  becomeInteractive();
  run("morvik.led.light('red', function(code) { log(code); return false; })");
  const auto request = sent();
  respond(*request, zeph::BUSY);
  respond(*request, zeph::ERROR);
  EXPECT_THAT(logged(), ElementsAre("BUSY", "ERROR"));
}

}  // namespace
}  // namespace morvik::test
