// morvik.start, morvik.stop, the server's answers, its stop notice, and SetInteractive.
#include "channel/interactive-mode.h"

#include "channel/callback-table.h"
#include "channel/script-functions.h"
#include "channel/timers.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

class InteractiveModeTest : public ScriptTest {
 protected:
  InteractiveModeTest() { run("var f = function() {};"); }
  ~InteractiveModeTest() override {
    removeTimers();
    if (connection_ != -1) instance.socket = connection_;
  }

  void disconnect() { connection_ = std::exchange(instance.socket, -1); }

  // The log since the last call.
  Lines lines() {
    Lines texts = levelled(log.lines());
    log.clear();
    return texts;
  }

  // Lets the script ask for interactive mode, and gives the request.
  zeph::ZephMsg started(const std::string& arguments) {
    EXPECT_EQ(run("morvik.start(" + arguments + ")"), "undefined");
    const auto request = sent();
    EXPECT_TRUE(request);
    log.clear();
    return request.value_or(zeph::ZephMsg());
  }

  // The log of an answer, without the four lines that every answer has.
  Lines answered(const zeph::ZephMsg& request, const std::string& text) {
    log.clear();
    answer(request, zephMsg(text));
    Lines texts = lines();
    EXPECT_GE(texts.size(), 4U);
    texts.erase(texts.begin(), texts.begin() + 4);
    return texts;
  }

  [[nodiscard]] std::string instanceLine() const {
    return "DEBUG MorvikData: " + pointerText(&instance);
  }

 private:
  int connection_ = -1;
};

// ---- morvik.start

TEST_F(InteractiveModeTest, startRefusesWrongArgumentsFirst) {
  const char* const wrong[] = {"",       "1",           "'f'",          "{}",
                               "null",   "f, 1",        "f, null",      "f, undefined",
                               "f, 'x'", "f, 1, 'id'",  "f, null, 'i'", "f, {}, 'id', 1",
                               "{}, f",  "1, {}, 'id'", "undefined, {}"};
  for (const bool connected : {true, false}) {
    if (!connected) disconnect();
    for (const char* arguments : wrong) {
      EXPECT_EQ(run(std::string("morvik.start(") + arguments + ")"), "throws: Wrong arguments")
          << arguments;
      EXPECT_THAT(lines(), ElementsAre("DEBUG starting interactiveMode", "DEBUG check arguments"));
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(InteractiveModeTest, startWithoutAConnectionSaysSo) {
  disconnect();
  for (const char* arguments : {"f", "f, {}", "f, f"}) {
    EXPECT_EQ(run(std::string("morvik.start(") + arguments + ")"), "throws: Connect first");
    EXPECT_THAT(lines(), ElementsAre("DEBUG starting interactiveMode", "DEBUG check arguments",
                                     instanceLine()));
  }
  EXPECT_EQ(run("morvik.start(f, {}, 'mine')"), "throws: Connect first");
  EXPECT_THAT(lines(), ElementsAre("DEBUG starting interactiveMode", "DEBUG check arguments",
                                   "WARNING DEPRECATED Use SetInteractive", instanceLine()));
  EXPECT_EQ(run("try { morvik.start(f); } catch (e) { typeof e; }"), "string");
}

TEST_F(InteractiveModeTest, startSendsTheIdItAsksForInsideThePayloadOnly) {
  for (const char* arguments : {"f", "f, {}", "f, []", "f, f"}) {
    zeph::ZephMsg request = started(arguments);
    const std::string id = request.interactivemode().interactiveid();
    EXPECT_THAT(id, testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    EXPECT_NE(id, request.id());
    request.clear_id();
    EXPECT_EQ(request.ShortDebugString(),
              "interactiveMode { action: START interactiveId: \"" + id + "\" }");
  }
  EXPECT_NE(started("f").interactivemode().interactiveid(),
            started("f").interactivemode().interactiveid());
}

TEST_F(InteractiveModeTest, startTakesAThirdArgumentsTextAsTheId) {
  const std::pair<const char*, const char*> rows[] = {
      {"'mine'", "mine"},
      {"12", "12"},
      {"null", "null"},
      {"undefined", "undefined"},
      {"''", ""},
      {"'\\u00e9\\u20ac'", "\u00e9\u20ac"},
      {"{toString: function() { return 'from an object'; }}", "from an object"},
      {"f.name", "f"},
      {"'a\\0b'", "a"},  // an id ends at its first zero byte
  };
  for (const auto& [third, id] : rows) {
    const zeph::ZephMsg request = started(std::string("f, {}, ") + third);
    EXPECT_EQ(request.interactivemode().interactiveid(), id) << third;
    answer(request, zephMsg("response { code: OK }"));
    EXPECT_EQ(instance.interactiveID, id) << third;
  }
}

TEST_F(InteractiveModeTest, aThirdArgumentThatThrowsReachesTheScriptAndNothingIsSent) {
  EXPECT_EQ(run("morvik.start(f, {}, {toString: function() { throw 'no text'; }})"),
            "throws: no text");
  EXPECT_EQ(run("morvik.start(f, {}, Symbol())"),
            "throws: TypeError: Cannot convert a Symbol value to a string");
  EXPECT_FALSE(sent());
}

TEST_F(InteractiveModeTest, startLogsItsStepsInOrder) {
  const std::pair<const char*, Lines> forms[] = {
      {"f", {}}, {"f, {}", {}}, {"f, {}, 'mine'", {"WARNING DEPRECATED Use SetInteractive"}}};
  for (const auto& [arguments, warning] : forms) {
    log.clear();
    run(std::string("morvik.start(") + arguments + ")");
    const auto request = sent();
    ASSERT_TRUE(request);
    Lines expected = {"DEBUG starting interactiveMode", "DEBUG check arguments"};
    expected.insert(expected.end(), warning.begin(), warning.end());
    expected.insert(
        expected.end(),
        {instanceLine(),
         "DEBUG starting interactiveMode: " + request->interactivemode().interactiveid(),
         "DEBUG function pointer: " +
             pointerText(reinterpret_cast<const void*>(InteractiveCallback)),
         "DEBUG Sending MSG\n" + request->DebugString()});
    EXPECT_EQ(lines(), expected) << arguments;
  }
}

// ---- the answer

TEST_F(InteractiveModeTest, theGrantIsStoredAndTheFunctionRunsThen) {
  const zeph::ZephMsg request = started(
      "function() { log('called ' + arguments.length + (this === arguments.callee)); }, {}, "
      "'mine'");
  EXPECT_FALSE(instance.interactiveID);
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_THAT(answered(request, "response { code: OK }"),
              ElementsAre("DEBUG InteractiveCallback...", "DEBUG Response...", instanceLine(),
                          "DEBUG calling interactiveMode function", "MESSAGE JSLOG: called 1true",
                          "DEBUG clean InteractiveData"));
  EXPECT_EQ(instance.interactiveID, "mine");
}

TEST_F(InteractiveModeTest, theFunctionGetsTheObjectThatStartWasGiven) {
  const std::pair<const char*, const char*> rows[] = {
      {"g", "0 true"}, {"g, kept", "1 true"}, {"g, kept, 'mine'", "1 true"}};
  run("var kept = {}; function g(object) {"
      "  log(arguments.length + ' ' + (arguments.length === 0 || object === kept)); }");
  for (const auto& [arguments, text] : rows) {
    const zeph::ZephMsg request = started(arguments);
    respond(request, zeph::OK);
    EXPECT_THAT(logged(), ElementsAre(text));
  }
}

TEST_F(InteractiveModeTest, theFunctionMayUseTheDevice) {
  const zeph::ZephMsg request =
      started("function() { morvik.led.light('red'); morvik.stop(); }, {}, 'mine'");
  respond(request, zeph::OK);
  EXPECT_EQ(sent().value_or(zeph::ZephMsg()).interactiveid(), "mine");
  EXPECT_EQ(sent().value_or(zeph::ZephMsg()).interactivemode().action(),
            zeph::InteractiveMode::STOP);
}

TEST_F(InteractiveModeTest, aFunctionThatThrowsIsReportedAndTheModeHolds) {
  const zeph::ZephMsg request = started("function() { throw 'oops'; }, {}, 'mine'");
  const Lines texts = answered(request, "response { code: OK }");
  EXPECT_EQ(texts.back(), "DEBUG clean InteractiveData");
  EXPECT_EQ(log.texts().size(), 0U);
  EXPECT_THAT(texts, testing::Contains(testing::HasSubstr("oops")));
  EXPECT_EQ(instance.interactiveID, "mine");
}

TEST_F(InteractiveModeTest, anAnswerWithoutACodeUsesTheRecordUp) {
  const std::pair<const char*, Lines> rows[] = {
      {"", {"DEBUG InteractiveCallback...", "DEBUG clean InteractiveData"}},
      {"event { code: OK }", {"DEBUG InteractiveCallback...", "DEBUG clean InteractiveData"}},
      {"response { }",
       {"DEBUG InteractiveCallback...", "DEBUG Response...", "DEBUG clean InteractiveData"}},
      {"response { description: 'd' }",
       {"DEBUG InteractiveCallback...", "DEBUG Response...", "DEBUG clean InteractiveData"}},
  };
  for (const auto& [text, expected] : rows) {
    const zeph::ZephMsg request = started("function() { log('called'); }");
    EXPECT_EQ(answered(request, text), expected) << text;
    EXPECT_THAT(answered(request, "response { code: OK }"),
                ElementsAre("DEBUG InteractiveCallback..."));
    EXPECT_FALSE(instance.interactiveID);
  }
}

TEST_F(InteractiveModeTest, aSecondAnswerDoesNothing) {
  const zeph::ZephMsg request = started("function() { log('called'); }, {}, 'mine'");
  respond(request, zeph::OK);
  instance.interactiveID = "other";
  for (const char* text : {"response { code: OK }", "response { code: BUSY }", ""}) {
    EXPECT_THAT(answered(request, text), ElementsAre("DEBUG InteractiveCallback..."));
  }
  EXPECT_EQ(instance.interactiveID, "other");
}

TEST_F(InteractiveModeTest, aRequestThatIsNeverAnsweredGoesWithoutAWord) {
  started("f");
  releaseCallbacks();
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(InteractiveModeTest, aSecondStartReplacesTheGrant) {
  for (const char* id : {"one", "two"}) {
    respond(started("f, {}, '" + std::string(id) + "'"), zeph::OK);
    EXPECT_EQ(instance.interactiveID, id);
  }
}

TEST_F(InteractiveModeTest, aRefusalEndsTheProcessWithStatusOne) {
  for (const zeph::VReturnCode code : {zeph::BUSY, zeph::ERROR}) {
    const zeph::ZephMsg request = started("function() { log('called'); }");
    EXPECT_EXIT((printLog(), respond(request, code)), ExitedWithCode(1),
                testing::AllOf(testing::EndsWith("DEBUG InteractiveCallback...\nDEBUG Response...\n"
                                                 "DEBUG Interactive mode is not valid: EXIT !\n"),
                               testing::Not(testing::HasSubstr("called"))));
  }
}

// ---- morvik.stop

TEST_F(InteractiveModeTest, stopRefusesInItsOrder) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* arguments : {"1", "undefined", "f", "1, 2"}) {
      EXPECT_EQ(run(std::string("morvik.stop(") + arguments + ")"), "throws: Wrong arguments");
      EXPECT_THAT(lines(), ElementsAre("DEBUG stop interactiveMode"));
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(InteractiveModeTest, stopOutsideInteractiveModeSaysSoEvenWhileAStartIsPending) {
  EXPECT_EQ(run("morvik.stop()"), "throws: Must be in interactive mode");
  EXPECT_THAT(lines(), ElementsAre("DEBUG stop interactiveMode"));
  started("f");
  EXPECT_EQ(run("morvik.stop()"), "throws: Must be in interactive mode");
  EXPECT_EQ(run("try { morvik.stop(); } catch (e) { typeof e; }"), "string");
  EXPECT_FALSE(sent());
}

TEST_F(InteractiveModeTest, stopSendsItsNoticeAndChangesNothing) {
  becomeInteractive("granted");
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(run("morvik.stop()"), "undefined");
    auto message = sent();
    ASSERT_TRUE(message);
    EXPECT_THAT(lines(),
                ElementsAre("DEBUG stop interactiveMode", "DEBUG stop interactiveMode: granted",
                            "DEBUG Sending MSG\n" + message->DebugString()));
    respond(*message, zeph::OK);
    EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
    log.clear();
    message->clear_id();
    EXPECT_EQ(message->ShortDebugString(),
              "interactiveId: \"granted\" interactiveMode { action: STOP }");
    EXPECT_EQ(instance.interactiveID, "granted");
  }
}

// ---- the stop notice

TEST_F(InteractiveModeTest, aStopNoticeArmsATimerOfFiveMinutes) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive("granted");
    deliver(zephMsg("id: 'n' interactiveMode { action: STOP }"));
    EXPECT_THAT(lines(), ElementsAre("WARNING interactive mode stopped, autokill in 300000ms"));
    EXPECT_GT(nextTimer(), 290000);
    EXPECT_LE(nextTimer(), 300000);
    EXPECT_EQ(removeTimers(), 1);
  }
  EXPECT_EQ(instance.interactiveID, "granted");
}

TEST_F(InteractiveModeTest, aSecondNoticeArmsASecondTimerAndNothingDisarmsOne) {
  for (int time = 0; time < 2; ++time) interactiveModeStopped();
  respond(started("f, {}, 'again'"), zeph::OK);
  EXPECT_EQ(instance.interactiveID, "again");
  EXPECT_EQ(removeTimers(), 2);
}

TEST_F(InteractiveModeTest, afterAStopNoticeTheScriptGoesOn) {
  becomeInteractive("granted");
  deliver(zephMsg("id: 'n' interactiveMode { action: STOP }"));
  EXPECT_EQ(run("morvik.led.light('red'); morvik.stop()"), "undefined");
  EXPECT_TRUE(sent().value_or(zeph::ZephMsg()).has_led());
  EXPECT_TRUE(sent().value_or(zeph::ZephMsg()).has_interactivemode());
}

TEST_F(InteractiveModeTest, theTimersEndIsTheProcesssWithStatusZero) {
  EXPECT_EXIT((printLog(), stopAutokillCallback(nullptr)), ExitedWithCode(0),
              testing::EndsWith("WARNING interactive mode stopped, autokill\n"));
}

// ---- SetInteractive

TEST_F(InteractiveModeTest, noScriptNameLeadsToSetInteractive) {
  EXPECT_EQ(run("Object.getOwnPropertyNames(morvik).concat("
                "Object.getOwnPropertyNames(this)).indexOf('SetInteractive')"),
            "-1");
}

TEST_F(InteractiveModeTest, setInteractiveRefusesInItsOrder) {
  expose("set", SetInteractive);
  const char* const wrong[] = {"", "'id'", "f", "1, f", "'id', 1", "f, 'id'", "'id', f, 1"};
  for (const char* arguments : wrong) {
    EXPECT_EQ(run(std::string("set(") + arguments + ")"), "throws: Wrong arguments") << arguments;
    EXPECT_THAT(lines(), ElementsAre("DEBUG set interactiveID"));
  }
  disconnect();
  EXPECT_EQ(run("set('id')"), "throws: Wrong arguments");
  log.clear();
  EXPECT_EQ(run("set('id', f)"), "throws: Connect first");
  EXPECT_THAT(lines(), ElementsAre("DEBUG set interactiveID"));
  EXPECT_FALSE(instance.interactiveID);
}

TEST_F(InteractiveModeTest, setInteractiveTakesEffectAtOnceAndSendsNothing) {
  expose("set", SetInteractive);
  EXPECT_EQ(run("set('mine', function() {"
                "  log('called ' + arguments.length + (this === arguments.callee)); })"),
            "undefined");
  EXPECT_THAT(lines(), ElementsAre("DEBUG set interactiveID", "DEBUG set interactiveID: mine",
                                   "MESSAGE JSLOG: called 0true"));
  EXPECT_EQ(instance.interactiveID, "mine");
  EXPECT_FALSE(sent());
  EXPECT_EQ(run("set('other', function() { throw 'oops'; })"), "throws: oops");
  EXPECT_EQ(instance.interactiveID, "other");
  EXPECT_EQ(run("set('a\\0b', function() {})"), "undefined");
  EXPECT_EQ(instance.interactiveID, "a");
}

}  // namespace
}  // namespace morvik::test
