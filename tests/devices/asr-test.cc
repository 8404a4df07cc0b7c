// morvik.asr: the one result that a request waits for, and its meaning.
#include "features/asr-meanings.h"
#include "support/text-message.h"
#include "support/unit/feature-test.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

constexpr const char* kCall = "morvik.asr.string('oui|non', 'fr', tell)";

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

TEST_F(AsrTest, nothingOfAnAnsweredRequestIsKept) {
  expectForgets("morvik.asr.string('oui|non', 'fr', kept)",
                "asrCallback { recognition { text: 'x' confident: 1 } }");
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
  for (const auto& [semantic, properties] : kMeanings) {
    SCOPED_TRACE(semantic);
    EXPECT_EQ(resultFor(semantic), "object {" + properties + R"("text":"heard","confident":7})");
  }
}

TEST_F(AsrTest, theNumberThatWasHeardWinsOverItsMeaning) {
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

}  // namespace
}  // namespace morvik::test
