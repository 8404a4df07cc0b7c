// morvik.ears: an exception of the engine, and answers to a function that returns false.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class EarsTest : public FeatureTest {};

TEST_F(EarsTest, aPositionThatCannotBeReadSendsNothing) {
  becomeInteractive();
  EXPECT_EQ(run("morvik.ears.move(1, Symbol('s'))"),
            "throws: TypeError: Cannot convert a Symbol value to a number");
  EXPECT_FALSE(sent());
}

TEST_F(EarsTest, everyAnswerToAResetIsHeardWhateverTheFunctionReturns) {
  becomeInteractive();
  run("result = false; morvik.ears.reset(tell)");
  const auto request = sent();
  ASSERT_TRUE(request);
  respond(*request, zeph::OK);
  respond(*request, zeph::TERMINATED);
  EXPECT_THAT(logged(), ElementsAre("string OK, number 0, number 0",
                                    "string TERMINATED, number 0, number 0"));
}

}  // namespace
}  // namespace morvik::test
