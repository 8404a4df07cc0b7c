// morvik.ears: moving and resetting the ears, and what is heard of them.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class EarsTest : public FeatureTest {
 protected:
  EarsTest() : FeatureTest("ears") {}
};

TEST_F(EarsTest, areThereOnlyWithTheirAccess) {
  expectFunctions("move,moveRelative,reset,resetRight,resetLeft,addListener");
}

TEST_F(EarsTest, callsSendPositions) {
  expectSends({{"move(1, 2)", "ears { left: 1 right: 2 }"},
               {"move(1, 2, f)", "ears { left: 1 right: 2 }"},
               {"move(null, 5)", "ears { right: 5 }"},
               {"move(5, null)", "ears { left: 5 }"},
               {"move(null, null)", "ears { }"},
               {"move(undefined, 5)", "ears { left: 0 right: 5 }"},
               {"move(2.9, -2.9)", "ears { left: 2 right: -2 }"},
               {"move('abc', 4294967295)", "ears { left: 0 right: -1 }"},
               {"move(f, '12')", "ears { left: 0 right: 12 }"},
               {"moveRelative(-3, null)", "ears { left: -3 relative: true }"},
               {"moveRelative(null, null, f)", "ears { relative: true }"},
               {"reset()", "ears { left: 1 right: 1 reset: true }"},
               {"reset(f)", "ears { left: 1 right: 1 reset: true }"},
               {"resetRight()", "ears { right: 1 reset: true }"},
               {"resetRight(f)", "ears { right: 1 reset: true }"},
               {"resetLeft()", "ears { left: 1 reset: true }"},
               {"resetLeft(f)", "ears { left: 1 reset: true }"}});
}

// The resets ask for interactive mode first, the others for their arguments: odd on purpose.
TEST_F(EarsTest, callsAreRefusedInTheirOrder) {
  expectRefuses(
      wrong({"move()", "move(1)", "move(1, 2, 3)", "move(1, 2, f, f)", "moveRelative(1)",
             "moveRelative(1, 2, {})", "addListener()", "addListener(1)", "addListener(f, f)"}) +
      needMode({"move(1, 2)", "move(1, 2, f)", "moveRelative(1, 2)", "reset()", "reset(f)",
                "resetRight()", "resetLeft(f)"}) +
      std::vector<RefusedRow>{{"reset(1)", kMode, kWrong},
                              {"reset(f, f)", kMode, kWrong},
                              {"resetRight(1)", kMode, kWrong},
                              {"resetLeft(null)", kMode, kWrong},
                              {"move(bad, 1)", kMode, "no text"},
                              {"moveRelative(1, bad, f)", kMode, "no text"}});
}

TEST_F(EarsTest, anAnswerToAMoveIsACode) {
  const Lines response{"DEBUG Event: EARS", "DEBUG calling response function",
                       "MESSAGE JSLOG: string OK"};
  const Lines event{"DEBUG Event: EARS", "DEBUG calling event function",
                    "MESSAGE JSLOG: string TERMINATED"};
  expectAnswered(
      {{"move(1, 2, tell)", "response { code: OK }", response},
       {"", "event { code: TERMINATED }", event},
       {"moveRelative(1, 2, tell)", "response { code: OK }", response},
       {"moveRelative(1, 2)", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

// An event goes before a response, which is odd on purpose, and only one of them is told.
TEST_F(EarsTest, anAnswerToAResetIsACodeAndTwoPositions) {
  const auto told = [](const std::string& arguments) {
    return Lines{"MESSAGE EarsResetCallback", "MESSAGE JSLOG: " + arguments};
  };
  expectAnswered(
      {{"reset(tell)", "response { code: OK }", told("string OK, number 0, number 0")},
       {"", "event { code: TERMINATED } response { code: OK } ears { left: 3 right: -4 }",
        told("string TERMINATED, number 3, number -4")},
       {"resetLeft(tell)", "ears { left: 3 }", told("string , number 3, number 0")},
       {"resetRight(tell)", "response { code: ERROR } ears { right: 7 }",
        told("string ERROR, number 0, number 7")},
       {"reset(tell)", "response { }", told("string OK, number 0, number 0")},
       {"reset()", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

TEST_F(EarsTest, listenersHearWhatTheEarsDo) {
  const auto told = [](const std::string& arguments) {
    return Lines{"MESSAGE JSLOG: " + arguments};
  };
  expectHears(
      {{"earsCallback { type: START_LEFT }", told("string START_LEFT, number 0, number 0")},
       {"earsCallback { type: START_RIGHT step: 1 }",
        told("string START_RIGHT, number 1, number 0")},
       {"earsCallback { type: STOP_LEFT step: 2 length: 16 }",
        told("string STOP_LEFT, number 2, number 16")},
       {"earsCallback { type: STOP_RIGHT length: -1 }",
        told("string STOP_RIGHT, number 0, number -1")},
       {"earsCallback { type: BLOCKED_LEFT }", told("string BLOCKED_LEFT, number 0, number 0")},
       {"earsCallback { type: BLOCKED_RIGHT }", told("string BLOCKED_RIGHT, number 0, number 0")},
       {"ears { left: 1 }", {}},
       {"buttonCallback { type: SIMPLE }", {}}});
}

TEST_F(EarsTest, listenersStayOnlyForTrue) {
  expectStaysOnlyForTrue("earsCallback { type: STOP_LEFT }");
}

}  // namespace
}  // namespace morvik::test
