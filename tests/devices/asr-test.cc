// morvik.asr: the request, the one result that it waits for, and the judgement of a path.
#include "support/unit/feature-test.h"
#include "support/unit/log-texts.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

constexpr const char* kCall = "morvik.asr.string('oui|non', 'fr', tell)";
constexpr const char* kFirst = "MESSAGE ASR: AsrCallback";
constexpr const char* kNoResponse = "MESSAGE ASR: AsrCallback: has_response false";
constexpr const char* kOne = "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 1";

class AsrTest : public FeatureTest {
 protected:
  // The request of kCall.
  zeph::ZephMsg asked() {
    becomeInteractive();
    run(kCall);
    auto request = sent();
    log.clear();
    return request.value_or(zeph::ZephMsg());
  }

  // What the script gets for a recognition with this semantic text.
  std::string resultFor(const std::string& semantic) {
    const auto request = asked();
    zeph::ZephMsg message;
    auto& recognition = *message.mutable_asrcallback()->add_recognition();
    recognition.set_text("heard");
    recognition.set_confident(7);
    recognition.set_semantic(semantic);
    answer(request, message);
    return logged().empty() ? "nothing" : logged()[0];
  }
};

TEST_F(AsrTest, sendsGrammarAndLanguage) {
  expectSends({
      {kCall, R"(asr { dictionary: "oui|non" lang: "fr" })", {"MESSAGE ASR: grammar[oui|non]"}},
      {"morvik.asr.string('', '', f)",
       R"(asr { dictionary: "" lang: "" })",
       {"MESSAGE ASR: grammar[]"}},
      {"morvik.asr.string(undefined, null, f)",
       R"(asr { dictionary: "undefined" lang: "null" })",
       {"MESSAGE ASR: grammar[undefined]"}},
      {"morvik.asr.string(1, {}, f)",
       R"(asr { dictionary: "1" lang: "[object Object]" })",
       {"MESSAGE ASR: grammar[1]"}},
      {"morvik.asr.string('\\u00e9\\u0141', 'fr', f)",
       R"(asr { dictionary: "\303\251\305\201" lang: "fr" })",
       {"MESSAGE ASR: grammar[\u00e9\u0141]"}},
  });
}

TEST_F(AsrTest, theFunctionIsMandatory) {
  expectRefused({
      "morvik.asr.string()",
      "morvik.asr.string('oui|non')",
      "morvik.asr.string('oui|non', 'fr')",
      "morvik.asr.string('oui|non', f)",
      "morvik.asr.string('oui|non', 'fr', 1)",
      "morvik.asr.string('oui|non', 'fr', {})",
      "morvik.asr.string('oui|non', 'fr', f, f)",
  });
}

TEST_F(AsrTest, stringNeedsInteractiveMode) {
  expectNeedsInteractive({kCall, "morvik.asr.string(bad, bad, f)"});
}

TEST_F(AsrTest, stringReadsTheGrammarBeforeTheLanguage) {
  expectReads("morvik.asr.string(read('g'), read('l'), f)", "gl");
}

TEST_F(AsrTest, aConversionThatThrowsReachesTheScript) {
  expectPassesExceptions({"morvik.asr.string(bad, 'fr', f)", "morvik.asr.string('x', bad, f)",
                          "morvik.asr.file(bad)", "morvik.asr.file(bad, f)"});
}

TEST_F(AsrTest, fileOnlyJudgesThePath) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* path :
         {"grammar.xml", "a.b/c", "", "/a", "Descriptor.xml", "descriptor_xml"}) {
      for (const char* tail : {"')", "', tell)"}) {
        SCOPED_TRACE(path);
        log.clear();
        EXPECT_EQ(run(std::string("morvik.asr.file('") + path + tail), "undefined");
        EXPECT_EQ(ownLines(), Lines{std::string("MESSAGE ASR: grammarFile[") + path + "]"});
      }
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(AsrTest, fileConvertsItsPath) {
  run("morvik.asr.file(12)");
  run("morvik.asr.file(undefined, f)");
  EXPECT_EQ(ownLines(),
            (Lines{"MESSAGE ASR: grammarFile[12]", "MESSAGE ASR: grammarFile[undefined]"}));
}

TEST_F(AsrTest, fileRefusesOtherArguments) {
  expectRefused({"morvik.asr.file()", "morvik.asr.file('x', 1)", "morvik.asr.file('x', 'y')",
                 "morvik.asr.file('x', f, f)", "morvik.asr.file('..', 1)"});
}

TEST_F(AsrTest, fileRefusesForbiddenPaths) {
  const std::pair<const char*, const char*> paths[] = {
      {"../x", "../x"},     {"a/descriptor.xml", "a/descriptor.xml"},     {"a b", "a b"},
      {"x..y", "x..y"},     {"descriptor.xml.old", "descriptor.xml.old"}, {"a\\\\b", "a\\b"},
      {"\\u00e9", "\u00e9"}};
  for (const auto& [path, text] : paths) {
    for (const char* tail : {"')", "', f)"}) {
      SCOPED_TRACE(path);
      log.clear();
      EXPECT_EQ(run(std::string("try { morvik.asr.file('") + path + tail +
                    "; } catch (e) { typeof e + ' ' + e; }"),
                std::string("string access denied: ") + text);
      EXPECT_EQ(ownLines(), Lines{std::string("WARNING access denied: ") + text});
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(AsrTest, tellsTheFirstRecognition) {
  expectAnswered(
      kCall,
      {
          {"asrCallback { recognition { text: 'oui' confident: 80 } }",
           {kFirst, kNoResponse, kOne, "MESSAGE ASR: AsrCallback: text : oui",
            "MESSAGE ASR: AsrCallback: confident : 80",
            "MESSAGE ASR: AsrCallback: recognition(0).has_semantic() false",
            "MESSAGE ASR: parseSemantic: size:0",
            "MESSAGE ASR: parseSemantic: Failed to parse document",
            R"(MESSAGE JSLOG: object {"text":"oui","confident":80})"}},
          {"response { code: OK } asrCallback { "
           "recognition { text: 'oui' confident: 80 semantic: '<a>\303\251</a>' } "
           "recognition { text: 'non' confident: 90 } }",
           {kFirst, "MESSAGE ASR: AsrCallback: response : OK",
            "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 2",
            "MESSAGE ASR: AsrCallback: text : oui", "MESSAGE ASR: AsrCallback: confident : 80",
            "MESSAGE ASR: AsrCallback: semantic : <a>\303\251</a>",
            "MESSAGE ASR: AsrCallback: semantic size : 9", "MESSAGE ASR: parseSemantic: size:9",
            "MESSAGE ASR: parseSemantic: succeed parse document",
            "MESSAGE node type: print_element_names", "MESSAGE node type: Element, name: a\n",
            "MESSAGE node type: Element, content: \303\251\n",
            "MESSAGE JSLOG: object {\"a\":\"\351\",\"text\":\"oui\",\"confident\":80}"}},
          {"response { code: BUSY } asrCallback { recognition { semantic: '<a' } }",
           {kFirst, kOne, "MESSAGE ASR: AsrCallback: recognition(0).has_text() false",
            "MESSAGE ASR: AsrCallback: recognition(0).has_confident() false",
            "MESSAGE ASR: AsrCallback: semantic : <a",
            "MESSAGE ASR: AsrCallback: semantic size : 2", "MESSAGE ASR: parseSemantic: size:2",
            "MESSAGE ASR: parseSemantic: Failed to parse document",
            R"(MESSAGE JSLOG: object {"text":"","confident":0})"}},
      });
}

TEST_F(AsrTest, nothingOfAnAnsweredRequestIsKept) {
  expectForgets("morvik.asr.string('oui|non', 'fr', kept)",
                "asrCallback { recognition { text: 'x' confident: 1 } }");
}

TEST_F(AsrTest, anAnswerWithoutAResultOnlyLogs) {
  const char* none = "MESSAGE ASR: AsrCallback: has_asrcallback false";
  const char* end = "MESSAGE ASR: AsrCallback end";
  expectAnswered(kCall, {
                            {"", {kFirst, kNoResponse, none, end}},
                            {"response { code: OK }",
                             {kFirst, "MESSAGE ASR: AsrCallback: response : OK", none, end}},
                            {"response { code: ERROR }",
                             {kFirst, "MESSAGE ASR: AsrCallback: response : ERROR", none, end}},
                            {"response { code: TIMEOUT }", {kFirst, none, end}},
                            {"response { description: 'x' }", {kFirst, none, end}},
                            {"event { code: TERMINATED }", {kFirst, kNoResponse, none, end}},
                        });
}

TEST_F(AsrTest, theResultMayComeAfterAnAcknowledgementAndCountsOnce) {
  const auto request = asked();
  const auto result = zephMsg("asrCallback { recognition { text: 'oui' confident: 1 } }");
  respond(request, zeph::OK);
  respond(request, zeph::ERROR);
  EXPECT_THAT(logged(), ElementsAre());
  answer(request, result);
  answer(request, result);
  respond(request, zeph::OK);
  EXPECT_THAT(logged(), ElementsAre(R"(object {"text":"oui","confident":1})"));
}

TEST_F(AsrTest, aResultWithoutARecognitionEndsTheProcess) {
  const auto die = [this] {
    const auto request = asked();
    printLog();
    answer(request, zephMsg("response { code: OK } asrCallback {}"));
  };
  EXPECT_DEATH(die(),
               "MESSAGE ASR: AsrCallback: response : OK\n"
               "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 0\n"
               "MESSAGE ASR: AsrCallback: recognition_size = 0\n"
               "ERROR ASR: AsrCallback: the server sent a recognition result without a "
               "recognition\n");
}

TEST_F(AsrTest, theMeaningBecomesObjectsAndTexts) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a><b>x</b></a>", R"("a":{"b":"x"},)"},
      {"<a/>", R"("a":"",)"},
      {"<a><b/><c>1</c><d><e>2</e></d></a>", R"("a":{"b":"","c":"1","d":{"e":"2"}},)"},
      {"<a><b>1</b><b>2</b></a>", R"("a":{"b":"2"},)"},
      {"<a id='1'>lost<b>x</b>lost</a>", R"("a":{"b":"x"},)"},
      {"<a><!-- c --><b>x</b></a>", R"("a":{"b":"x"},)"},
      {"<a>one &amp; two</a>", R"("a":"one & two",)"},
      {"<a><![CDATA[<b>]]></a>", R"("a":"<b>",)"},
      {"<a><b>x</b>", ""},
      {"x", ""},
      {"<a/><b/>", ""},
  };
  for (const auto& [semantic, properties] : rows) {
    SCOPED_TRACE(semantic);
    EXPECT_EQ(resultFor(semantic),
              std::string("object {") + properties + R"("text":"heard","confident":7})");
  }
}

TEST_F(AsrTest, whatWasHeardWinsOverItsMeaning) {
  EXPECT_EQ(resultFor("<text>meant</text>"), R"(object {"text":"heard","confident":7})");
  EXPECT_EQ(resultFor("<confident><a>1</a></confident>"),
            R"(object {"confident":7,"text":"heard"})");
}

TEST_F(AsrTest, aPartOfTheMeaningMayHaveAnyName) {
  EXPECT_EQ(resultFor("<__proto__><a>1</a></__proto__>"),
            R"(object {"__proto__":{"a":"1"},"text":"heard","confident":7})");
}

TEST_F(AsrTest, aFunctionThatThrowsIsReported) {
  becomeInteractive();
  run("morvik.asr.string('x', 'fr', function() { throw 'broken'; })");
  answer(*sent(), zephMsg("asrCallback { recognition { text: 'x' confident: 1 } }"));
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::HasSubstr("broken")));
}

TEST_F(AsrTest, twoRequestsHearTheirOwnResults) {
  becomeInteractive();
  run("morvik.asr.string('x', 'fr', r => log('first ' + r.text))");
  const auto first = sent();
  run("morvik.asr.string('y', 'fr', r => log('second ' + r.text))");
  const auto second = sent();
  ASSERT_TRUE(first && second);
  answer(*second, zephMsg("asrCallback { recognition { text: 'b' confident: 1 } }"));
  answer(*first, zephMsg("asrCallback { recognition { text: 'a' confident: 1 } }"));
  EXPECT_THAT(logged(), ElementsAre("second b", "first a"));
}

TEST_F(AsrTest, hasItsFunctions) {
  EXPECT_EQ(run("Object.keys(morvik.asr).join()"), "file,string");
}

}  // namespace
}  // namespace morvik::test
