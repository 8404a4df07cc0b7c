// morvik.asr: a request's one result and its meaning, and a launch by voice.
#include <signal.h>

#include "features/asr-meanings.h"
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

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

TEST_F(AsrTest, fileJudgesOutsideInteractiveModeToo) {
  connect("log(morvik.asr.file('grammar.xml')); morvik.start(f => f, {});", access());
  EXPECT_EQ(app.logged(), "undefined");
  EXPECT_TRUE(device.receive().has_interactivemode()) << "nothing was sent before";
}

TEST_F(AsrTest, theMeaningBecomesObjectsAndTexts) {
  std::string script;
  for (std::size_t i = 0; i < kMeanings.size(); ++i)
    script += "morvik.asr.string('x', 'fr', tell);";
  interactive(withGlobals(script), access());
  for (const auto& [semantic, properties] : kMeanings)
    EXPECT_EQ(told(device.receive(), semantic),
              "object {" + properties + R"("text":"heard","confident":7})")
        << semantic;
}

TEST_F(AsrTest, aResultCountsOnce) {
  interactive("morvik.asr.string('x', 'fr', function(r) { log(r.text); }); ping(log);", access());
  const zeph::ZephMsg request = device.receive();
  device.reply(request, "ERROR");
  EXPECT_EQ(told(request, ""), "heard");
  answer(request, "asrCallback { recognition { text: 'again' confident: 1 } }");
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
  EXPECT_THAT(voice.logged(3),
              ElementsAre("hello|<semantic><a>1</a></semantic>|50", R"({"a":"1"})", "undefined"));
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
