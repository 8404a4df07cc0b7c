// morvik.tts: the forms of start, and stop.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class TtsTest : public FeatureTest {
 protected:
  TtsTest() : FeatureTest("tts") {}
};

TEST_F(TtsTest, isThereOnlyWithItsAccess) { expectFunctions("start,stop"); }

TEST_F(TtsTest, callsSendTextAndLanguage) {
  const auto say = [](const std::string& text) { return "MESSAGE TTS: say[" + text + "]"; };
  const auto lang = [](const std::string& text) { return "MESSAGE TTS: lang[" + text + "]"; };
  const Lines bonjour{say("bonjour")};
  const std::string alone = R"(tts { action: START text: "bonjour" })";
  expectSends(
      {{"start('bonjour')", alone, bonjour},
       {"start('bonjour', f)", alone, bonjour},
       {"start('bonjour', 'fr')",
        R"(tts { action: START text: "bonjour" lang: "fr" })",
        {say("bonjour"), lang("fr")}},
       {"start('bonjour', 5)",
        R"(tts { action: START text: "bonjour" lang: "5" })",
        {say("bonjour"), lang("5")}},
       {"start('bonjour', 'fr', f)",
        R"(tts { action: START text: "bonjour" lang: "fr" })",
        {say("bonjour"), lang("fr")}},
       {"start('bonjour', 'fr', 5)", alone, bonjour},
       {"start('bonjour', f, {})", alone, bonjour},
       {"start(undefined)", R"(tts { action: START text: "undefined" })", {say("undefined")}},
       {"start('\\u00e9\\u20ac')",
        R"(tts { action: START text: "\303\251\342\202\254" })",
        {say("\u00e9\u20ac")}},
       {"stop()",
        "tts { action: STOP }",
        {"MESSAGE TtsFunctionStop start", "MESSAGE TtsFunctionStop"}},
       {"stop(f)",
        "tts { action: STOP }",
        {"MESSAGE TtsFunctionStop start", "MESSAGE TtsFunctionStop arg ok",
         "MESSAGE TtsFunctionStop"}}});
}

// stop says that it was called before it looks at anything.
TEST_F(TtsTest, callsAreRefusedInTheirOrder) {
  const Lines stopCalled{"MESSAGE TtsFunctionStop start"};
  expectRefuses(
      wrong({"start()", "start('x', 'fr', f, f)", "start('x', 'fr', 1, f)"}) +
      needMode({"start('x')", "start('x', f)", "start('x', 'fr', 5)"}) +
      std::vector<RefusedRow>{{"stop(5)", kWrong, kWrong, stopCalled},
                              {"stop(f, f)", kWrong, kWrong, stopCalled},
                              {"stop()", kMode, "", stopCalled},
                              {"stop(f)",
                               kMode,
                               "",
                               {"MESSAGE TtsFunctionStop start", "MESSAGE TtsFunctionStop arg ok"}},
                              {"start(bad)", kMode, "no text"}});
}

TEST_F(TtsTest, anAnswerIsACode) {
  const Lines response{"DEBUG Event: TTS", "DEBUG calling response function",
                       "MESSAGE JSLOG: string OK"};
  const Lines nobody{"WARNING NO CORRELATION FOUND"};
  expectAnswered(
      {{"start('x', tell)", "response { code: OK }", response},
       {"",
        "event { code: TERMINATED }",
        {"DEBUG Event: TTS", "DEBUG calling event function", "MESSAGE JSLOG: string TERMINATED"}},
       {"start('x', 'fr', tell)", "response { code: OK }", response},
       {"stop(tell)", "response { code: OK }", response},
       {"start('x', tell, 5)", "response { code: OK }", nobody},
       {"stop()", "response { code: OK }", nobody}});
}

}  // namespace
}  // namespace morvik::test
