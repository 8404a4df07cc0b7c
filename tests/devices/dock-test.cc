// morvik.dock: unknown directions, and the listener that no script name is bound to.
#include "devices/dock-listener.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class DockTest : public FeatureTest {};

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

TEST_F(DockTest, anAnswerToAnUnknownDirectionFindsNoFunction) {
  expectAnswered({{"try { morvik.dock.move('left', 500, tell); } catch (e) {}",
                   "response { code: OK }",
                   {"DEBUG Event: DOCKMOVE", "DEBUG calling response function",
                    "WARNING DOCKMOVE: the reply finds no function"}},
                  {"",
                   "event { code: TERMINATED }",
                   {"DEBUG Event: DOCKMOVE", "DEBUG calling event function",
                    "WARNING DOCKMOVE: the reply finds no function"}},
                  {"", "dock { status: 1 }", {"DEBUG Event: DOCKMOVE"}}});
}

TEST_F(DockTest, itsListenerHearsStatusAndChange) {
  expose("addDockListener", addDockListener);
  expectHears(
      {
          {"dock { status: 3 change: -1 }", {"MESSAGE JSLOG: number 3, number -1"}},
          {"dock { change: 4 }", {"MESSAGE JSLOG: number 0, number 4"}},
          {"dock { }", {"MESSAGE JSLOG: number 0, number 0"}},
          {"led { }", {}},
      },
      "addDockListener");
}

TEST_F(DockTest, itsListenerTakesOneFunction) {
  expose("addDockListener", addDockListener);
  expectRefuses(wrong({"addDockListener()", "addDockListener(5)", "addDockListener({})",
                       "addDockListener(null)", "addDockListener('f')", "addDockListener(f, f)",
                       "addDockListener(f, 1)"}));
}

TEST_F(DockTest, itsListenerStaysOnlyForTrue) {
  expose("addDockListener", addDockListener);
  expectStaysOnlyForTrue("dock { status: 1 }", "addDockListener");
}

TEST_F(DockTest, theWaysHaveTheirNumbers) {
  EXPECT_EQ(zeph::Dock::LEFT, 1);
  EXPECT_EQ(zeph::Dock::RIGHT, 2);
  EXPECT_EQ(zeph::Dock::UP, 3);
  EXPECT_EQ(zeph::Dock::DOWN, 4);
  EXPECT_EQ(zeph::Dock::STOP, 5);
}

}  // namespace
}  // namespace morvik::test
