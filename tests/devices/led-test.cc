// morvik.led: arguments, conversions, fields, log lines and answers.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class LedTest : public FeatureTest {};

struct Call {
  const char* source;
  const char* sent;  // the led payload in text form
  const char* line;  // the log line
};

TEST_F(LedTest, sendsItsArgumentsConvertedAndLogsThem) {
  const Call calls[] = {
      {"light('red')", "light { color: \"red\" }", "LED Light: color[red]"},
      {"light(undefined)", "light { color: \"undefined\" }", "LED Light: color[undefined]"},
      {"light(null)", "light { color: \"null\" }", "LED Light: color[null]"},
      {"light(12)", "light { color: \"12\" }", "LED Light: color[12]"},
      {"light('')", "light { color: \"\" }", "LED Light: color[]"},
      {"light({})", "light { color: \"[object Object]\" }", "LED Light: color[[object Object]]"},
      {"light('a\\0b')", "light { color: \"a b\" }", "LED Light: color[a b]"},
      {"light('\\u0141')", "light { color: \"A\" }", "LED Light: color[A]"},
      // One byte for each unit, up to the last one that a byte holds.
      {"light('\\u0080\\u00e9\\u00ff')", "light { color: \"\\200\\351\\377\" }",
       "LED Light: color[\x80\xe9\xff]"},
      {"light(function() { return 1; }.name)", "light { color: \"\" }", "LED Light: color[]"},
      {"fade('x', 5)", "fade { color: \"x\" period: 5 }", "LED Fade: color[x] period[5]"},
      {"fade('x', -1)", "fade { color: \"x\" period: -1 }", "LED Fade: color[x] period[-1]"},
      {"fade('x', 'abc')", "fade { color: \"x\" period: 0 }", "LED Fade: color[x] period[0]"},
      {"fade('x', 2.9)", "fade { color: \"x\" period: 2 }", "LED Fade: color[x] period[2]"},
      {"fade('x', '12')", "fade { color: \"x\" period: 12 }", "LED Fade: color[x] period[12]"},
      {"fade('x', {})", "fade { color: \"x\" period: 0 }", "LED Fade: color[x] period[0]"},
      {"fade('x', function() {})", "fade { color: \"x\" period: 0 }",
       "LED Fade: color[x] period[0]"},
      {"fade('x', 4294967296)", "fade { color: \"x\" period: 0 }", "LED Fade: color[x] period[0]"},
      {"pulse('x', 1, 2)", "pulse { color: \"x\" period: 1 pulse: 2 }",
       "LED Pulse: color[x] period[1] pulse[2]"},
      {"pulse('x', -2, 3000000000)", "pulse { color: \"x\" period: -2 pulse: -1294967296 }",
       "LED Pulse: color[x] period[-2] pulse[-1294967296]"},
  };
  becomeInteractive("granted");
  for (const Call& call : calls) {
    SCOPED_TRACE(call.source);
    log.clear();
    EXPECT_EQ(run(std::string("morvik.led.") + call.source), "undefined");
    EXPECT_EQ(log.lines().at(0), (LogLine{G_LOG_LEVEL_DEBUG, call.line}));
    const auto message = sent();
    ASSERT_TRUE(message);
    EXPECT_EQ(message->led().ShortDebugString(), call.sent);
    EXPECT_EQ(message->interactiveid(), "granted");
  }
}

TEST_F(LedTest, readsItsArgumentsFromLeftToRight) {
  expectReads("morvik.led.fade(read('c'), read('t'))", "ct");
  expectReads("morvik.led.pulse(read('c'), read('t'), read('p'), f)", "ctp");
}

TEST_F(LedTest, setsNoOtherFieldOfTheEnvelope) {
  becomeInteractive("granted");
  run("morvik.led.light('red')");
  auto message = sent();
  ASSERT_TRUE(message);
  EXPECT_THAT(message->id(), testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
  message->clear_id();
  EXPECT_EQ(message->ShortDebugString(),
            "interactiveId: \"granted\" led { light { color: \"red\" } }");
}

TEST_F(LedTest, refusesInItsOrder) {
  const char* const wrong[] = {
      "light()",       "light('x', 5)",       "light('x', function(){}, 1)", "light('x', f, f)",
      "fade('x')",     "fade('x', 1, 2)",     "fade('x', 1, f, f)",          "pulse()",
      "pulse('x', 1)", "pulse('x', 1, 2, 3)", "pulse('x', 1, 2, f, f)",
  };
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* call : wrong) {
      SCOPED_TRACE(call);
      EXPECT_EQ(run(std::string("var f = function(){}; morvik.led.") + call),
                "throws: Wrong arguments");
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(LedTest, outsideInteractiveModeItSaysSoAndSendsNothing) {
  for (const char* call : {"light('x')", "fade('x', 1)", "pulse('x', 1, 2, function(){})"}) {
    EXPECT_EQ(run(std::string("morvik.led.") + call), "throws: Must be in interactive mode");
  }
  EXPECT_FALSE(sent());
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(LedTest, refusalsArePlainStrings) {
  EXPECT_EQ(run("try { morvik.led.light(); } catch (e) { typeof e; }"), "string");
  EXPECT_EQ(run("try { morvik.led.light(1); } catch (e) { typeof e; }"), "string");
}

TEST_F(LedTest, aConversionThatThrowsReachesTheScriptAndNothingIsSent) {
  becomeInteractive();
  for (const char* call :
       {"light(bad)", "fade(bad, 1)", "fade('x', bad)", "pulse('x', 1, bad, f)"}) {
    SCOPED_TRACE(call);
    EXPECT_EQ(run(std::string("var f = function(){};"
                              "var bad = {toString() { throw 'no text'; }};"
                              "morvik.led.") +
                  call),
              "throws: no text");
  }
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

TEST_F(LedTest, anAnswerWithoutResponseAndEventOnlyLogs) {
  becomeInteractive();
  run("morvik.led.fade('red', 1, function(code) { log(code); })");
  answer(*sent(), zeph::ZephMsg());
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "Event: LED"));
  EXPECT_THAT(logged(), ElementsAre());
}

TEST_F(LedTest, withoutAFunctionNobodyWaits) {
  becomeInteractive();
  run("morvik.led.light('red')");
  respond(*sent(), zeph::OK);
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
}

TEST_F(LedTest, hasNoListener) {
  EXPECT_EQ(run("Object.keys(morvik.led).sort().join()"), "fade,light,pulse");
}

}  // namespace
}  // namespace morvik::test
