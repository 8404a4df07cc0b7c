// morvik.dock: its LED, which logs as the device's own does, and its motion.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class DockTest : public FeatureTest {
 protected:
  DockTest() : FeatureTest("dock") {}
};

TEST_F(DockTest, isThereOnlyWithItsAccess) { expectFunctions("light,fade,pulse,move"); }

TEST_F(DockTest, callsSendLightsAndMoves) {
  expectSends({{"light('red')",
                R"(dock { led { light { color: "red" } } })",
                {"DEBUG LED Light: color[red]"}},
               {"light(undefined, f)",
                R"(dock { led { light { color: "undefined" } } })",
                {"DEBUG LED Light: color[undefined]"}},
               {"fade('x', -1)",
                R"(dock { led { fade { color: "x" period: -1 } } })",
                {"DEBUG LED Fade: color[x] period[-1]"}},
               {"fade('x', 2.9, f)",
                R"(dock { led { fade { color: "x" period: 2 } } })",
                {"DEBUG LED Fade: color[x] period[2]"}},
               {"pulse('x', 'abc', 3)",
                R"(dock { led { pulse { color: "x" period: 0 pulse: 3 } } })",
                {"DEBUG LED Pulse: color[x] period[0] pulse[3]"}},
               {"move('LEFT')", "dock { move { cmd: LEFT time: 0 } }"},
               {"move('LEFT', 500)", "dock { move { cmd: LEFT time: 500 } }"},
               {"move('RIGHT', 2.9)", "dock { move { cmd: RIGHT time: 2 } }"},
               {"move('UP', 500)", "dock { move { cmd: UP time: 500 } }"},
               {"move('DOWN', -1)", "dock { move { cmd: DOWN time: -1 } }"},
               {"move('STOP', 0)", "dock { move { cmd: STOP time: 0 } }"},
               {"move('STOP', NaN, f)", "dock { move { cmd: STOP time: 0 } }"}});
}

TEST_F(DockTest, callsAreRefusedInTheirOrder) {
  expectRefuses(wrong({"light()", "light('x', 5)", "fade('x')", "pulse('x', 1, 2, 3)", "move()",
                       "move(1, 500)", "move('LEFT', '500')", "move('LEFT', f)",
                       "move('LEFT', new Number(1))", "move('LEFT', 500, 7)",
                       "move('LEFT', 500, f, f)", "move(new String('UP'))", "move('up', '1')"}) +
                needMode({"light('x')", "fade('x', 1, f)", "pulse('x', 1, 2)", "move('LEFT')",
                          "move('LEFT', 500, f)", "move('left', 500)"}) +
                std::vector<RefusedRow>{{"light(bad)", kMode, "no text"}});
}

// The request goes out behind the exception, and moves nothing.
TEST_F(DockTest, anUnknownDirectionThrowsAndSendsAStop) {
  const std::vector<std::string> calls{"move('left', 500)", "move('', 500)", "move('UP ')"};
  std::string script;
  for (const std::string& call : calls)
    script += "log(caught(function() { morvik.dock." + call + "; })); ";
  interactive(script, access());
  for (const int time : {500, 500, 0}) {
    EXPECT_EQ(app.logged(), "string: Wrong 1st arguments");
    EXPECT_EQ(device.receive().dock().ShortDebugString(),
              "move { cmd: STOP time: " + std::to_string(time) + " }");
  }
}

TEST_F(DockTest, anAnswerToALightIsACode) {
  expectAnswered(
      {{"light('x', tell)",
        "response { code: OK }",
        {"DEBUG Event: DOCKLED", "DEBUG calling response function", "MESSAGE JSLOG: string OK"}},
       {"",
        "event { code: TERMINATED }",
        {"DEBUG Event: DOCKLED", "DEBUG calling event function",
         "MESSAGE JSLOG: string TERMINATED"}}});
}

// The reply looks for the function where the time is: odd on purpose.
TEST_F(DockTest, theFunctionGivenToMoveIsNeverCalled) {
  expectAnswered(
      {{"move('LEFT', 500, tell)",
        "response { code: OK }",
        {"DEBUG Event: DOCKMOVE", "DEBUG calling response function",
         "WARNING DOCKMOVE: the reply finds no function"}},
       {"",
        "event { code: TERMINATED }",
        {"DEBUG Event: DOCKMOVE", "DEBUG calling event function",
         "WARNING DOCKMOVE: the reply finds no function"}},
       {"move('LEFT', 500)", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

}  // namespace
}  // namespace morvik::test
