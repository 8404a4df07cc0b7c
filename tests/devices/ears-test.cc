// morvik.ears: positions, resets and what the ears tell.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class EarsTest : public FeatureTest {};

TEST_F(EarsTest, movesTheEarsThatAreNotNull) {
  expectSends({
      {"morvik.ears.move(1, 2)", "ears { left: 1 right: 2 }", {}},
      {"morvik.ears.move(1, 2, f)", "ears { left: 1 right: 2 }", {}},
      {"morvik.ears.move(null, 5)", "ears { right: 5 }", {}},
      {"morvik.ears.move(5, null)", "ears { left: 5 }", {}},
      {"morvik.ears.move(null, null)", "ears { }", {}},
      {"morvik.ears.move(null, null, f)", "ears { }", {}},
      {"morvik.ears.move(undefined, 5)", "ears { left: 0 right: 5 }", {}},
      {"morvik.ears.moveRelative(-3, null)", "ears { left: -3 relative: true }", {}},
      {"morvik.ears.moveRelative(null, 4)", "ears { right: 4 relative: true }", {}},
      {"morvik.ears.moveRelative(1, -2, f)", "ears { left: 1 right: -2 relative: true }", {}},
      {"morvik.ears.moveRelative(null, null)", "ears { relative: true }", {}},
  });
}

TEST_F(EarsTest, convertsPositions) {
  expectSends({
      {"morvik.ears.move(2.9, -2.9)", "ears { left: 2 right: -2 }", {}},
      {"morvik.ears.move('abc', '12')", "ears { left: 0 right: 12 }", {}},
      {"morvik.ears.move({}, [7])", "ears { left: 0 right: 7 }", {}},
      {"morvik.ears.move(true, NaN)", "ears { left: 1 right: 0 }", {}},
      {"morvik.ears.move(4294967295, 2147483648)", "ears { left: -1 right: -2147483648 }", {}},
      {"morvik.ears.move(Infinity, '')", "ears { left: 0 right: 0 }", {}},
      {"morvik.ears.move('null', 0)", "ears { left: 0 right: 0 }", {}},
      {"morvik.ears.move(1, f)", "ears { left: 1 right: 0 }", {}},  // not in the callback's place
  });
}

TEST_F(EarsTest, moveRefusesInItsOrder) {
  expectRefused({"morvik.ears.move()", "morvik.ears.move(1)", "morvik.ears.move(f)",
                 "morvik.ears.move(1, 2, 3)", "morvik.ears.move(1, 2, null)",
                 "morvik.ears.move(1, 2, f, f)", "morvik.ears.moveRelative()",
                 "morvik.ears.moveRelative(1)", "morvik.ears.moveRelative(1, 2, 'f')",
                 "morvik.ears.moveRelative(1, 2, f, 3)"});
}

TEST_F(EarsTest, needsInteractiveMode) {
  expectNeedsInteractive({"morvik.ears.move(1, 2)", "morvik.ears.move(bad, 2)",
                          "morvik.ears.move(null, null, f)", "morvik.ears.moveRelative(1, 2)",
                          "morvik.ears.moveRelative(1, 2, f)"});
}

TEST_F(EarsTest, aPositionThatCannotBeReadSendsNothing) {
  expectPassesExceptions({"morvik.ears.move(bad, 1)", "morvik.ears.move(1, bad)",
                          "morvik.ears.move(null, bad, f)", "morvik.ears.moveRelative(bad, bad)"});
  EXPECT_EQ(run("morvik.ears.move(1, Symbol('s'))"),
            "throws: TypeError: Cannot convert a Symbol value to a number");
  EXPECT_FALSE(sent());
}

TEST_F(EarsTest, positionsAreReadFromLeftToRight) {
  expectReads("morvik.ears.move(read('l'), read('r'))", "lr");
  expectReads("morvik.ears.moveRelative(read('l'), read('r'), f)", "lr");
}

TEST_F(EarsTest, anAnswerToAMoveIsACodesName) {
  const std::vector<HeardRow> rows = {
      {"response { code: OK }",
       {"DEBUG Event: EARS", "DEBUG calling response function", "MESSAGE JSLOG: string OK"}},
      {"event { code: TERMINATED }",
       {"DEBUG Event: EARS", "DEBUG calling event function", "MESSAGE JSLOG: string TERMINATED"}},
      {"ears { left: 1 }", {"DEBUG Event: EARS"}},
  };
  expectAnswered("morvik.ears.move(1, 2, tell)", rows);
  expectAnswered("morvik.ears.moveRelative(null, null, tell)", rows);
}

TEST_F(EarsTest, resetMarksTheEars) {
  expectSends({
      {"morvik.ears.reset()", "ears { left: 1 right: 1 reset: true }", {}},
      {"morvik.ears.reset(f)", "ears { left: 1 right: 1 reset: true }", {}},
      {"morvik.ears.resetRight()", "ears { right: 1 reset: true }", {}},
      {"morvik.ears.resetRight(f)", "ears { right: 1 reset: true }", {}},
      {"morvik.ears.resetLeft()", "ears { left: 1 reset: true }", {}},
      {"morvik.ears.resetLeft(f)", "ears { left: 1 reset: true }", {}},
  });
}

// The other way round than everywhere else.
TEST_F(EarsTest, resetAsksForInteractiveModeBeforeItsArguments) {
  for (const char* name : {"reset", "resetRight", "resetLeft"}) {
    const std::string reset = std::string("morvik.ears.") + name;
    instance.interactiveID.reset();
    expectNeedsInteractive({reset + "()", reset + "(f)", reset + "(1)", reset + "(f, f)"});
    becomeInteractive();
    for (const char* arguments : {"(1)", "(null)", "(undefined)", "({})", "(f, f)", "(1, f)"}) {
      SCOPED_TRACE(reset + arguments);
      expectThrows(reset + arguments, "Wrong arguments");
      EXPECT_FALSE(sent());
    }
  }
}

TEST_F(EarsTest, anAnswerToAResetIsANameAndTwoPositions) {
  const auto heard = [](const char* arguments) {
    return Lines{"MESSAGE EarsResetCallback", std::string("MESSAGE JSLOG: ") + arguments};
  };
  const std::vector<HeardRow> rows = {
      {"response { code: OK }", heard("string OK, number 0, number 0")},
      {"event { code: TERMINATED }", heard("string TERMINATED, number 0, number 0")},
      {"response { code: OK } event { code: ERROR } ears { left: 1 }",
       heard("string ERROR, number 1, number 0")},  // the event alone
      {"ears { left: 3 right: -4 }", heard("string , number 3, number -4")},
      {"response { code: BUSY } ears { right: 2147483647 }",
       heard("string BUSY, number 0, number 2147483647")},
      {"ping { }", heard("string , number 0, number 0")},
      {"response { description: 'no code' }", heard("string OK, number 0, number 0")},
      {"event { description: 'no code' }", heard("string OK, number 0, number 0")},
  };
  for (const char* name : {"reset", "resetRight", "resetLeft"}) {
    expectAnswered(std::string("morvik.ears.") + name + "(tell)", rows);
  }
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

TEST_F(EarsTest, withoutAFunctionNobodyWaits) {
  becomeInteractive();
  for (const char* call : {"move(1, 2)", "moveRelative(1, 2)", "reset()"}) {
    run(std::string("morvik.ears.") + call);
    log.clear();
    respond(*sent(), zeph::OK);
    EXPECT_THAT(ownLines(), ElementsAre("WARNING NO CORRELATION FOUND"));
  }
}

TEST_F(EarsTest, listenersHearWhatTheEarsDo) {
  expectListens("morvik.ears.addListener",
                {
                    {"earsCallback { type: START_LEFT step: 3 length: 7 }",
                     {"MESSAGE JSLOG: string START_LEFT, number 3, number 7"}},
                    {"earsCallback { type: START_RIGHT step: -1 }",
                     {"MESSAGE JSLOG: string START_RIGHT, number -1, number 0"}},
                    {"earsCallback { type: STOP_LEFT length: 2 }",
                     {"MESSAGE JSLOG: string STOP_LEFT, number 0, number 2"}},
                    {"earsCallback { type: STOP_RIGHT }",
                     {"MESSAGE JSLOG: string STOP_RIGHT, number 0, number 0"}},
                    {"earsCallback { type: BLOCKED_LEFT }",
                     {"MESSAGE JSLOG: string BLOCKED_LEFT, number 0, number 0"}},
                    {"earsCallback { type: BLOCKED_RIGHT }",
                     {"MESSAGE JSLOG: string BLOCKED_RIGHT, number 0, number 0"}},
                    {"ears { left: 1 }", {}},
                    {"buttonCallback { type: SIMPLE }", {}},
                });
}

TEST_F(EarsTest, aListenerStaysOnlyForTrue) {
  expectStaysOnlyForTrue("morvik.ears.addListener", "earsCallback { type: STOP_LEFT }");
}

TEST_F(EarsTest, hasTheseFunctions) {
  EXPECT_EQ(run("Object.keys(morvik.ears).join()"),
            "move,moveRelative,reset,resetRight,resetLeft,addListener");
}

}  // namespace
}  // namespace morvik::test
