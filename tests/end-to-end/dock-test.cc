// morvik.dock: unknown directions.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class DockTest : public FeatureTest {
 protected:
  DockTest() : FeatureTest("dock") {}
};

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

}  // namespace
}  // namespace morvik::test
