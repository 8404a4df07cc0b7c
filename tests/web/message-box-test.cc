// morvik.message: numbers, limits, standard output, and what is kept of a query.
#include <unistd.h>

#include <cstdio>

#include "features/features.h"
#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class MessageBoxTest : public FeatureTest {
 protected:
  // Throws this text, and sends and prints nothing.
  void expectThrowsSilently(const std::string& call, const std::string& text) {
    SCOPED_TRACE(call);
    testing::internal::CaptureStdout();
    expectThrows(call, text);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(ownLines(), Lines());
    EXPECT_FALSE(sent());
  }
};

class MessageRowsTest : public FeatureTest {
 protected:
  MessageRowsTest() : FeatureTest("message") {}
};

TEST_F(MessageRowsTest, whatIsRefusedWritesNothingToStandardOutput) {
  testing::internal::CaptureStdout();
  expectRefuses(messageFeature().refuses);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

class MessageBoxDeathTest : public MessageBoxTest {};

TEST_F(MessageBoxTest, theActionsHaveTheirNumbers) {
  EXPECT_EQ(zeph::MorvikMessageQuery::NEW, 1);
  EXPECT_EQ(zeph::MorvikMessageQuery::LIST, 2);
  EXPECT_EQ(zeph::MorvikMessageQuery::GET, 3);
  EXPECT_EQ(zeph::MorvikMessageQuery::DELETE, 4);
  EXPECT_EQ(zeph::MorvikMessageQuery::READ, 5);
}

TEST_F(MessageBoxTest, anIdThatTheEngineDoesNotConvertReachesTheScript) {
  becomeInteractive();
  EXPECT_EQ(run("morvik.message.get([Symbol()], f)"),
            "throws: TypeError: Cannot convert a Symbol value to a string");
}

TEST_F(MessageBoxTest, idsBeyondAllMeasureAreRefused) {
  becomeInteractive();
  // 10485760 bytes on the wire, two of them for each id's tag and length.
  const char* const kMost = "Array(102801).fill('x'.repeat(100)).concat('x'.repeat(56))";
  // All of them are taken: the next one, which has no text, comes to its turn.
  expectThrowsSilently(std::string("morvik.message.get(") + kMost + ".concat([bad]), f)",
                       "no text");
  const std::string tooMany = std::string(kMost) + ".concat('')";
  for (const char* name : {"get", "delete", "markAsRead"}) {
    expectThrowsSilently(std::string("morvik.message.") + name + "(" + tooMany + ", f)",
                         "Too many ids");
  }
  // There an id goes out within an object: four bytes for both tags and lengths, and six with
  // lengths beyond 127.
  for (const char* most : {"Array(100824).fill('x'.repeat(100)).concat('x'.repeat(60))",
                           "Array(50901).fill('x'.repeat(200)).concat('x'.repeat(148))"}) {
    const std::string call = std::string("morvik.message.new({objects: ") + most;
    expectThrowsSilently(call + ".concat([bad])}, 'x')", "no text");
    expectThrowsSilently(call + ".concat('')}, 'x')", "Too many ids");
  }
  expectThrowsSilently("morvik.message.new({objects: new Array(4294967295)}, 'x')", "Too many ids");
}

TEST_F(MessageBoxTest, newWritesTheMessageToStandardOutput) {
  becomeInteractive("granted");
  testing::internal::CaptureStdout();
  run("morvik.message.new({uuid: 'u', objects: ['1']}, 'hi')");
  const std::string written = testing::internal::GetCapturedStdout();
  const auto message = sent();
  ASSERT_TRUE(message);
  EXPECT_EQ(written, "id: \"" + message->id() +
                         "\"\n"
                         "interactiveId: \"granted\"\n"
                         "morvikMessageQuery {\n"
                         "  action: NEW\n"
                         "  message {\n"
                         "    header {\n"
                         "      to {\n"
                         "        objects {\n"
                         "          idDB: \"1\"\n"
                         "        }\n"
                         "        uuid: \"u\"\n"
                         "      }\n"
                         "    }\n"
                         "    content {\n"
                         "      type: TEXT\n"
                         "      content: \"hi\"\n"
                         "    }\n"
                         "  }\n"
                         "}\n");
}

TEST_F(MessageBoxTest, theOthersWriteNothingToStandardOutput) {
  becomeInteractive();
  testing::internal::CaptureStdout();
  for (const char* call :
       {"list(f)", "get(['a'], f)", "delete(['a'], f)", "markAsRead(['a'], f)"}) {
    EXPECT_EQ(run(std::string("morvik.message.") + call), "undefined");
    EXPECT_TRUE(sent());
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(MessageBoxDeathTest, newSendsBeforeItWrites) {
  becomeInteractive();
  instance.socket = -1;
  const auto failToSend = [this] {
    dup2(STDERR_FILENO, STDOUT_FILENO);  // where the death test listens
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    run("morvik.message.new({uuid: 'u'}, 'hi')");
  };
  EXPECT_DEATH(failToSend(), testing::AllOf(testing::HasSubstr("send failed"),
                                            testing::Not(testing::HasSubstr("action: NEW"))));
}

TEST_F(MessageBoxTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("morvik.message.list(kept)", "morvikMessageResponse { }");
  expectForgets("morvik.message.get(['a'], kept)", "morvikMessageResponse { }");
}

TEST_F(MessageBoxTest, whatItHandsOverStandsOutsideTheApplicationsGlobals) {
  becomeInteractive();
  run("morvik.message.list(all => log(Array.isArray(all) + ' ' + (all instanceof Array)))");
  answer(*sent(), zephMsg("morvikMessageResponse { }"));
  EXPECT_THAT(logged(), ElementsAre("true false"));
}

}  // namespace
}  // namespace morvik::test
