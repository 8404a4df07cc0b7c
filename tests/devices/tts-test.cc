// morvik.tts: what is spoken, in which language, and how it is stopped.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class TtsTest : public FeatureTest {};

TEST_F(TtsTest, startTakesALanguageAndAFunctionOrEither) {
  expectSends({
      {"morvik.tts.start('bonjour')",
       "tts { action: START text: \"bonjour\" }",
       {"MESSAGE TTS: say[bonjour]"}},
      {"morvik.tts.start('bonjour', f)",
       "tts { action: START text: \"bonjour\" }",
       {"MESSAGE TTS: say[bonjour]"}},
      {"morvik.tts.start('bonjour', 'fr')",
       "tts { action: START text: \"bonjour\" lang: \"fr\" }",
       {"MESSAGE TTS: say[bonjour]", "MESSAGE TTS: lang[fr]"}},
      {"morvik.tts.start('bonjour', 5)",
       "tts { action: START text: \"bonjour\" lang: \"5\" }",
       {"MESSAGE TTS: say[bonjour]", "MESSAGE TTS: lang[5]"}},
      {"morvik.tts.start('bonjour', undefined)",
       "tts { action: START text: \"bonjour\" lang: \"undefined\" }",
       {"MESSAGE TTS: say[bonjour]", "MESSAGE TTS: lang[undefined]"}},
      {"morvik.tts.start('bonjour', '', f)",
       "tts { action: START text: \"bonjour\" lang: \"\" }",
       {"MESSAGE TTS: say[bonjour]", "MESSAGE TTS: lang[]"}},
      {"morvik.tts.start('bonjour', null, f)",
       "tts { action: START text: \"bonjour\" lang: \"null\" }",
       {"MESSAGE TTS: say[bonjour]", "MESSAGE TTS: lang[null]"}},
      {"morvik.tts.start(f)",
       "tts { action: START text: \"function() {}\" }",
       {"MESSAGE TTS: say[function() {}]"}},
      {"morvik.tts.start('', f, f)",
       "tts { action: START text: \"\" lang: \"function() {}\" }",
       {"MESSAGE TTS: say[]", "MESSAGE TTS: lang[function() {}]"}},
  });
}

// A third argument that is no function takes the language with it, silently.
TEST_F(TtsTest, aThirdArgumentThatIsNoFunctionIsDroppedWithTheLanguage) {
  expectSends({
      {"morvik.tts.start('bonjour', 'fr', 5)",
       "tts { action: START text: \"bonjour\" }",
       {"MESSAGE TTS: say[bonjour]"}},
      {"morvik.tts.start('bonjour', f, null)",
       "tts { action: START text: \"bonjour\" }",
       {"MESSAGE TTS: say[bonjour]"}},
      {"morvik.tts.start('bonjour', bad, bad)",
       "tts { action: START text: \"bonjour\" }",
       {"MESSAGE TTS: say[bonjour]"}},
  });
}

TEST_F(TtsTest, readsTheTextBeforeTheLanguage) {
  expectReads("morvik.tts.start(read('t'), read('l'))", "tl");
}

TEST_F(TtsTest, textsAreUtf8) {
  expectSends({
      {"morvik.tts.start('h\\u00e9', '\\u4e2d')",
       "tts { action: START text: \"h\\303\\251\" lang: \"\\344\\270\\255\" }",
       {"MESSAGE TTS: say[h\u00e9]", "MESSAGE TTS: lang[\u4e2d]"}},
      {"morvik.tts.start('\\ud83d\\ude00')",
       "tts { action: START text: \"\\360\\237\\230\\200\" }",
       {"MESSAGE TTS: say[\U0001F600]"}},
      {"morvik.tts.start(12.5)",
       "tts { action: START text: \"12.5\" }",
       {"MESSAGE TTS: say[12.5]"}},
      {"morvik.tts.start({})",
       "tts { action: START text: \"[object Object]\" }",
       {"MESSAGE TTS: say[[object Object]]"}},
  });
}

TEST_F(TtsTest, startRefusesInItsOrder) {
  expectRefused({"morvik.tts.start()", "morvik.tts.start('a', 'b', f, f)",
                 "morvik.tts.start('a', 'b', 'c', 'd')", "morvik.tts.start('a', 'b', f, 1, f)"});
}

TEST_F(TtsTest, startNeedsInteractiveMode) {
  expectNeedsInteractive({"morvik.tts.start('a')", "morvik.tts.start(bad)",
                          "morvik.tts.start('a', f)", "morvik.tts.start('a', 'b', 5)"});
}

TEST_F(TtsTest, aTextThatCannotBeReadSendsNothing) {
  expectPassesExceptions({"morvik.tts.start(bad)", "morvik.tts.start(bad, 'fr', f)"});
  expectPassesExceptions({"morvik.tts.start('a', bad)", "morvik.tts.start('a', bad, f)"},
                         {"MESSAGE TTS: say[a]"});
}

TEST_F(TtsTest, stopSendsTheActionAlone) {
  expectSends({
      {"morvik.tts.stop()",
       "tts { action: STOP }",
       {"MESSAGE TtsFunctionStop start", "MESSAGE TtsFunctionStop"}},
      {"morvik.tts.stop(f)",
       "tts { action: STOP }",
       {"MESSAGE TtsFunctionStop start", "MESSAGE TtsFunctionStop arg ok",
        "MESSAGE TtsFunctionStop"}},
  });
}

struct Refusal {
  const char* call;
  bool interactive;
  const char* text;
  Lines lines;
};

TEST_F(TtsTest, stopLogsBeforeItRefuses) {
  const Lines start = {"MESSAGE TtsFunctionStop start"};
  const Lines startAndFunction = {"MESSAGE TtsFunctionStop start",
                                  "MESSAGE TtsFunctionStop arg ok"};
  const Refusal refusals[] = {
      {"morvik.tts.stop(5)", false, "Wrong arguments", start},
      {"morvik.tts.stop(5)", true, "Wrong arguments", start},
      {"morvik.tts.stop(null)", true, "Wrong arguments", start},
      {"morvik.tts.stop(f, f)", true, "Wrong arguments", start},
      {"morvik.tts.stop()", false, "Must be in interactive mode", start},
      {"morvik.tts.stop(f)", false, "Must be in interactive mode", startAndFunction},
  };
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.call);
    instance.interactiveID.reset();
    if (refusal.interactive) becomeInteractive();
    expectThrows(refusal.call, refusal.text);
    EXPECT_EQ(ownLines(), refusal.lines);
    EXPECT_FALSE(sent());
  }
}

TEST_F(TtsTest, anAnswerIsACodesName) {
  const std::vector<HeardRow> rows = {
      {"response { code: OK }",
       {"DEBUG Event: TTS", "DEBUG calling response function", "MESSAGE JSLOG: string OK"}},
      {"event { code: TERMINATED }",
       {"DEBUG Event: TTS", "DEBUG calling event function", "MESSAGE JSLOG: string TERMINATED"}},
  };
  expectAnswered("morvik.tts.start('a', tell)", rows);
  expectAnswered("morvik.tts.start('a', 'fr', tell)", rows);
  expectAnswered("morvik.tts.stop(tell)", rows);
}

TEST_F(TtsTest, withoutAFunctionNobodyWaits) {
  const std::vector<HeardRow> rows = {{"response { code: OK }", {"WARNING NO CORRELATION FOUND"}}};
  expectAnswered("morvik.tts.start('a', 'fr')", rows);
  expectAnswered("morvik.tts.start('a', tell, 5)", rows);
  expectAnswered("morvik.tts.stop()", rows);
}

TEST_F(TtsTest, hasTheseFunctionsAndNoListener) {
  EXPECT_EQ(run("Object.keys(morvik.tts).join()"), "start,stop");
}

}  // namespace
}  // namespace morvik::test
