// morvik.dock: its LED, its motion, and the listener that no script name is bound to.
#include "devices/dock-listener.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class DockTest : public FeatureTest {};

// The log does not tell this LED from the device's own.
TEST_F(DockTest, sendsToItsOwnLed) {
  expectSends({
      {"morvik.dock.light('red')",
       "dock { led { light { color: \"red\" } } }",
       {"DEBUG LED Light: color[red]"}},
      {"morvik.dock.light(undefined, f)",
       "dock { led { light { color: \"undefined\" } } }",
       {"DEBUG LED Light: color[undefined]"}},
      {"morvik.dock.fade('x', -1)",
       "dock { led { fade { color: \"x\" period: -1 } } }",
       {"DEBUG LED Fade: color[x] period[-1]"}},
      {"morvik.dock.fade('a\\0b', 2.9, f)",
       "dock { led { fade { color: \"a b\" period: 2 } } }",
       {"DEBUG LED Fade: color[a b] period[2]"}},
      {"morvik.dock.pulse('x', 'abc', 3000000000)",
       "dock { led { pulse { color: \"x\" period: 0 pulse: -1294967296 } } }",
       {"DEBUG LED Pulse: color[x] period[0] pulse[-1294967296]"}},
      {"morvik.dock.pulse(12, 1, 2, f)",
       "dock { led { pulse { color: \"12\" period: 1 pulse: 2 } } }",
       {"DEBUG LED Pulse: color[12] period[1] pulse[2]"}},
  });
}

TEST_F(DockTest, itsLedRefusesInItsOrder) {
  expectRefused({"morvik.dock.light()", "morvik.dock.light('x', 5)", "morvik.dock.light('x', f, f)",
                 "morvik.dock.fade('x')", "morvik.dock.fade('x', 1, 2)",
                 "morvik.dock.pulse('x', 1)", "morvik.dock.pulse('x', 1, 2, 3)",
                 "morvik.dock.pulse('x', 1, 2, f, f)"});
}

TEST_F(DockTest, needsInteractiveMode) {
  expectNeedsInteractive({"morvik.dock.light('x')", "morvik.dock.fade('x', 1, f)",
                          "morvik.dock.pulse('x', 1, 2)", "morvik.dock.move('LEFT')",
                          "morvik.dock.move('left', 5)", "morvik.dock.move('LEFT', 5, f)"});
}

TEST_F(DockTest, aValueThatCannotBeReadSendsNothing) {
  expectPassesExceptions({"morvik.dock.light(bad)", "morvik.dock.fade('x', bad)",
                          "morvik.dock.pulse('x', 1, bad, f)"});
}

TEST_F(DockTest, anAnswerToItsLedHasItsOwnLabel) {
  const std::vector<HeardRow> rows = {
      {"response { code: OK }",
       {"DEBUG Event: DOCKLED", "DEBUG calling response function", "MESSAGE JSLOG: string OK"}}};
  expectAnswered("morvik.dock.light('x', tell)", rows);
  expectAnswered("morvik.dock.fade('x', 1, tell)", rows);
  expectAnswered("morvik.dock.pulse('x', 1, 2, tell)", rows);
}

TEST_F(DockTest, movesInFiveWaysForATime) {
  expectSends({
      {"morvik.dock.move('UP', 500)", "dock { move { cmd: UP time: 500 } }", {}},
      {"morvik.dock.move('DOWN', 1)", "dock { move { cmd: DOWN time: 1 } }", {}},
      {"morvik.dock.move('RIGHT', 2.9)", "dock { move { cmd: RIGHT time: 2 } }", {}},
      {"morvik.dock.move('LEFT', 500)", "dock { move { cmd: LEFT time: 500 } }", {}},
      {"morvik.dock.move('STOP', 0)", "dock { move { cmd: STOP time: 0 } }", {}},
      {"morvik.dock.move('LEFT', -1)", "dock { move { cmd: LEFT time: -1 } }", {}},
      {"morvik.dock.move('LEFT', NaN)", "dock { move { cmd: LEFT time: 0 } }", {}},
      {"morvik.dock.move('LEFT', Infinity)", "dock { move { cmd: LEFT time: 0 } }", {}},
      {"morvik.dock.move('LEFT', 4294967297)", "dock { move { cmd: LEFT time: 1 } }", {}},
      {"morvik.dock.move('LEFT', 500, f)", "dock { move { cmd: LEFT time: 500 } }", {}},
      {"morvik.dock.move('LEFT')", "dock { move { cmd: LEFT time: 0 } }", {}},  // set all the same
  });
  EXPECT_EQ(zeph::Dock::LEFT, 1);
  EXPECT_EQ(zeph::Dock::RIGHT, 2);
  EXPECT_EQ(zeph::Dock::UP, 3);
  EXPECT_EQ(zeph::Dock::DOWN, 4);
  EXPECT_EQ(zeph::Dock::STOP, 5);
}

TEST_F(DockTest, moveRefusesInItsOrder) {
  expectRefused({"morvik.dock.move()", "morvik.dock.move(1)", "morvik.dock.move(1, 500)",
                 "morvik.dock.move(f)", "morvik.dock.move(null, 500)", "morvik.dock.move(bad)",
                 "morvik.dock.move(new String('LEFT'), 500)", "morvik.dock.move('LEFT', '500')",
                 "morvik.dock.move('LEFT', f)", "morvik.dock.move('LEFT', undefined)",
                 "morvik.dock.move('LEFT', new Number(5))", "morvik.dock.move('LEFT', 500, 7)",
                 "morvik.dock.move('LEFT', 500, null)", "morvik.dock.move('LEFT', f, f)",
                 "morvik.dock.move(1, 500, f)", "morvik.dock.move('LEFT', 500, f, f)",
                 "morvik.dock.move('left', '500')"});
}

// The exception comes, and a request that moves nothing goes out all the same.
TEST_F(DockTest, anUnknownDirectionThrowsAndSendsStop) {
  becomeInteractive("granted");
  for (const char* direction : {"left", "", "UP ", "LEFTX", "S", "5"}) {
    SCOPED_TRACE(direction);
    const std::string call = std::string("morvik.dock.move('") + direction + "'";
    expectThrows(call + ", 500)", "Wrong 1st arguments");
    expectOneMessage("dock { move { cmd: STOP time: 500 } }");
    expectThrows(call + ")", "Wrong 1st arguments");
    expectOneMessage("dock { move { cmd: STOP time: 0 } }");
    expectThrows(call + ", 7, f)", "Wrong 1st arguments");
    expectOneMessage("dock { move { cmd: STOP time: 7 } }");
  }
}

// The reply looks for its function where the time is.
TEST_F(DockTest, theFunctionGivenToMoveIsNeverCalled) {
  const std::vector<HeardRow> rows = {
      {"response { code: OK }",
       {"DEBUG Event: DOCKMOVE", "DEBUG calling response function",
        "WARNING DOCKMOVE: the reply finds no function"}},
      {"event { code: TERMINATED }",
       {"DEBUG Event: DOCKMOVE", "DEBUG calling event function",
        "WARNING DOCKMOVE: the reply finds no function"}},
      {"dock { status: 1 }", {"DEBUG Event: DOCKMOVE"}},
  };
  expectAnswered("morvik.dock.move('LEFT', 500, tell)", rows);
  expectAnswered("try { morvik.dock.move('left', 500, tell); } catch (e) {}", rows);
}

TEST_F(DockTest, withoutAFunctionNobodyWaits) {
  expectAnswered("morvik.dock.move('LEFT', 500)",
                 {{"response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

TEST_F(DockTest, itsListenerHearsStatusAndChange) {
  expose("addDockListener", addDockListener);
  expectListens("addDockListener",
                {
                    {"dock { status: 3 change: -1 }", {"MESSAGE JSLOG: number 3, number -1"}},
                    {"dock { change: 4 }", {"MESSAGE JSLOG: number 0, number 4"}},
                    {"dock { }", {"MESSAGE JSLOG: number 0, number 0"}},
                    {"led { }", {}},
                });
}

TEST_F(DockTest, itsListenerStaysOnlyForTrue) {
  expose("addDockListener", addDockListener);
  expectStaysOnlyForTrue("addDockListener", "dock { status: 1 }");
}

TEST_F(DockTest, hasTheseFunctionsAndNoListener) {
  EXPECT_EQ(run("Object.keys(morvik.dock).join()"), "light,fade,pulse,move");
}

}  // namespace
}  // namespace morvik::test
