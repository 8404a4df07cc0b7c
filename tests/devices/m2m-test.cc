// morvik.m2m: a call answered from its listener.
#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class M2mTest : public FeatureTest {};

TEST_F(M2mTest, aListenerCanAnswerTheCall) {
  becomeInteractive("granted");
  run("morvik.m2m.addListener(c => { if (c.type === 'INCOMING') morvik.m2m.answer(true); })");
  deliver(zephMsg("m2mCallback { type: INCOMING correspondant: 'a' }"));
  const auto answered = sent();
  ASSERT_TRUE(answered);
  EXPECT_TRUE(answered->m2m().answer().accept());
}

}  // namespace
}  // namespace morvik::test
