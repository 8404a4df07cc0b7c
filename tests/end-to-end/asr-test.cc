// morvik.asr: the request, its one result, the judgement of a path, and a launch by voice.
#include <signal.h>

#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

constexpr char kCalled[] = "MESSAGE ASR: AsrCallback";
constexpr char kNoResponse[] = "MESSAGE ASR: AsrCallback: has_response false";
constexpr char kOk[] = "MESSAGE ASR: AsrCallback: response : OK";
constexpr char kError[] = "MESSAGE ASR: AsrCallback: response : ERROR";
constexpr char kNoResult[] = "MESSAGE ASR: AsrCallback: has_asrcallback false";
constexpr char kNoResultEnd[] = "MESSAGE ASR: AsrCallback end";

class AsrTest : public FeatureTest {
 protected:
  AsrTest() : FeatureTest("asr") {}

  // What the script is told of a recognition with this semantic text.
  std::string told(const zeph::ZephMsg& request, const std::string& semantic) {
    zeph::ZephMsg result = replyTo(request);
    auto& recognition = *result.mutable_asrcallback()->add_recognition();
    recognition.set_text("heard");
    recognition.set_confident(7);
    recognition.set_semantic(semantic);
    device.send(result);
    return app.logged();
  }
};

TEST_F(AsrTest, isThereOnlyWithItsAccess) { expectFunctions("file,string"); }

// file sends nothing, though the schema has a field for it.
TEST_F(AsrTest, callsSendAGrammarAndNeverAFile) {
  expectSends({{"string('oui|non', 'fr', f)",
                R"(asr { dictionary: "oui|non" lang: "fr" })",
                {"MESSAGE ASR: grammar[oui|non]"}},
               {"string('\\u20ac', undefined, f)",
                R"(asr { dictionary: "\342\202\254" lang: "undefined" })",
                {"MESSAGE ASR: grammar[\u20ac]"}},
               {"file('grammar.xml')", "", {"MESSAGE ASR: grammarFile[grammar.xml]"}},
               {"file('a.b/c', f)", "", {"MESSAGE ASR: grammarFile[a.b/c]"}},
               {"file(12)", "", {"MESSAGE ASR: grammarFile[12]"}}});
}

TEST_F(AsrTest, callsAreRefusedInTheirOrder) {
  const auto denied = [](const std::string& name) {
    const std::string text = "access denied: " + name;
    return RefusedRow{"file('" + name + "')", text, text, {"WARNING " + text}};
  };
  expectRefuses(wrong({"string()", "string('oui|non', 'fr')", "string('oui|non', f)",
                       "string('oui|non', 'fr', 1)", "string('oui|non', 'fr', f, f)", "file()",
                       "file('x', 1)", "file('x', f, f)", "file('../x', 1)"}) +
                needMode({"string('oui|non', 'fr', f)"}) +
                std::vector<RefusedRow>{{"string(bad, 'fr', f)", kMode, "no text"},
                                        {"file(bad)", "no text", "no text"},
                                        denied("../x"),
                                        denied("a/descriptor.xml"),
                                        denied("a b"),
                                        denied("a..b")});
}

TEST_F(AsrTest, fileJudgesOutsideInteractiveModeToo) {
  connect("log(morvik.asr.file('grammar.xml')); morvik.start(f => f, {});", access());
  EXPECT_EQ(app.logged(), "undefined");
  EXPECT_TRUE(device.receive().has_interactivemode()) << "nothing was sent before";
}

TEST_F(AsrTest, aResultIsToldFieldByField) {
  const std::string call = "string('oui|non', 'fr', tell)";
  expectAnswered(
      {{call, "response { code: OK }", {kCalled, kOk, kNoResult, kNoResultEnd}},
       {"", "response { code: ERROR }", {kCalled, kError, kNoResult, kNoResultEnd}},
       {"", "event { code: TERMINATED }", {kCalled, kNoResponse, kNoResult, kNoResultEnd}},
       {"", "response { code: TIMEOUT }", {kCalled, kNoResult, kNoResultEnd}},
       {"", "response { }", {kCalled, kNoResult, kNoResultEnd}},
       {"",
        "response { code: OK } asrCallback {"
        " recognition { text: 'oui' confident: 80 semantic: '<a><b>\303\251</b></a>' }"
        " recognition { text: 'non' confident: 90 } }",
        {kCalled, kOk, "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 2",
         "MESSAGE ASR: AsrCallback: text : oui", "MESSAGE ASR: AsrCallback: confident : 80",
         "MESSAGE ASR: AsrCallback: semantic : <a><b>\303\251</b></a>",
         "MESSAGE ASR: AsrCallback: semantic size : 16", "MESSAGE ASR: parseSemantic: size:16",
         "MESSAGE ASR: parseSemantic: succeed parse document",
         "MESSAGE node type: print_element_names", "MESSAGE node type: Element, name: a\n",
         "MESSAGE node type: print_element_names", "MESSAGE node type: Element, name: b\n",
         "MESSAGE node type: Element, content: \303\251\n",
         "MESSAGE JSLOG: object {\"a\":{\"b\":\"\351\"},\"text\":\"oui\",\"confident\":80}"}},
       {call,
        "asrCallback { recognition { text: 'oui' confident: 80 } }",
        {kCalled, kNoResponse,
         "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 1",
         "MESSAGE ASR: AsrCallback: text : oui", "MESSAGE ASR: AsrCallback: confident : 80",
         "MESSAGE ASR: AsrCallback: recognition(0).has_semantic() false",
         "MESSAGE ASR: parseSemantic: size:0",
         "MESSAGE ASR: parseSemantic: Failed to parse document",
         R"(MESSAGE JSLOG: object {"text":"oui","confident":80})"}}});
}

TEST_F(AsrTest, whatARecognitionLacksIsToldToo) {
  expectAnswered(
      {{"string('x', 'fr', tell)",
        "response { code: BUSY } asrCallback { recognition { semantic: '<a' } }",
        {kCalled, "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 1",
         "MESSAGE ASR: AsrCallback: recognition(0).has_text() false",
         "MESSAGE ASR: AsrCallback: recognition(0).has_confident() false",
         "MESSAGE ASR: AsrCallback: semantic : <a", "MESSAGE ASR: AsrCallback: semantic size : 2",
         "MESSAGE ASR: parseSemantic: size:2",
         "MESSAGE ASR: parseSemantic: Failed to parse document",
         R"(MESSAGE JSLOG: object {"text":"","confident":0})"}}});
}

TEST_F(AsrTest, theMeaningBecomesObjectsAndTexts) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"<a>x</a>", R"("a":"x",)"},
      {"<a/>", R"("a":"",)"},
      {"<a><b/><c>1</c><d><e>2</e></d></a>", R"("a":{"b":"","c":"1","d":{"e":"2"}},)"},
      {"<a><b>1</b><b>2</b></a>", R"("a":{"b":"2"},)"},
      {"<a id='1'>lost<b>x</b>lost</a>", R"("a":{"b":"x"},)"},
      {"<text>meant</text>", ""},
      {"<a><b>x</b>", ""},
      {"x", ""},
      {"", ""}};
  std::string script;
  for (std::size_t i = 0; i < rows.size(); ++i) script += "morvik.asr.string('x', 'fr', tell);";
  interactive(withGlobals(script), access());
  for (const auto& [semantic, properties] : rows)
    EXPECT_EQ(told(device.receive(), semantic),
              "object {" + properties + R"("text":"heard","confident":7})")
        << semantic;
}

TEST_F(AsrTest, aResultCountsOnce) {
  interactive("morvik.asr.string('x', 'fr', function(r) { log(r.text); }); ping(log);", access());
  const zeph::ZephMsg request = device.receive();
  device.reply(request, "ERROR");
  EXPECT_EQ(told(request, ""), "heard");
  zeph::ZephMsg second = replyTo(request);
  second.MergeFrom(messageOf("asrCallback { recognition { text: 'again' confident: 1 } }"));
  device.send(second);
  receiveAndReply("OK");
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(AsrTest, aResultIsNoObjectOfTheApplicationsOwn) {
  interactive(
      "Object.prototype.mark = 1; morvik.asr.string('x', 'fr', function(r) {"
      " log([r instanceof Object, r.a instanceof Object, r.mark].join()); });",
      access());
  EXPECT_EQ(told(device.receive(), "<a><b>1</b></a>"), "false,false,");
}

// There is no result to tell: the log says so, and that is the application's end.
TEST_F(AsrTest, aResultWithoutARecognitionEndsTheApplication) {
  interactive("morvik.asr.string('x', 'fr', function() { log('never'); });", access());
  zeph::ZephMsg result = responseTo(device.receive(), "OK");
  result.mutable_asrcallback();
  EXPECT_EQ(endOf(app, [&] { device.send(result); }), killedBy(SIGTRAP));
  const std::vector<std::string> texts = app.texts();
  EXPECT_THAT(std::vector(texts.end() - 5, texts.end()),
              ElementsAre("ASR: AsrCallback", "ASR: AsrCallback: response : OK",
                          "ASR: AsrCallback: has_asrcallback true. recognition_size: 0",
                          "ASR: AsrCallback: recognition_size = 0",
                          "ASR: AsrCallback: the server sent a recognition result without a "
                          "recognition"));
}

TEST_F(AsrTest, aLaunchByVoiceHasItsMeaning) {
  apps.app("app", {},
           "var t = launchType; t.semantic = 'ignored'; Object.prototype.mark = 1;"
           "log([t.text, t.rawSemantic, t.confident].join('|')); log(JSON.stringify(t.semantic));"
           "log(typeof t.semantic.mark); setTimeout(0, function() { exit(); });");
  App voice = launch("app ASR;hello;<a>1</a>");
  EXPECT_EQ(voice.logged(), "hello|<semantic><a>1</a></semantic>|50");
  EXPECT_EQ(voice.logged(), R"({"a":"1"})");
  EXPECT_EQ(voice.logged(), "undefined");
  App twoElements = launch("app ASR;hello;<a>1</a><b>2</b>");
  twoElements.logged();
  EXPECT_EQ(twoElements.logged(), R"({"a":"1","b":"2"})");
  App onlyText = launch("app ASR;hello;hi");
  onlyText.logged();
  EXPECT_EQ(onlyText.logged(), R"("hi")");
}

TEST_F(AsrTest, aLaunchByVoiceWithBrokenMeaningHasNone) {
  apps.app("app", {}, "log(typeof launchType.semantic);");
  EXPECT_EQ(launch("app ASR;hello;<a>").logged(), "undefined");
}

}  // namespace
}  // namespace morvik::test
