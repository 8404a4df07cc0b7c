// The pump on the main loop: what a turn handles, with one connection and after a second one. What
// it dispatches, and morvik.connect, stand in connection-test.cc.
#include "channel/pump.h"

#include "channel/connection.h"
#include "support/text-message.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class PumpOnTheLoopTest : public ScriptTest {
 protected:
  PumpOnTheLoopTest() { run("morvik.button.addListener(function(p) { log(p); return true; })"); }
  ~PumpOnTheLoopTest() override {
    while (g_source_remove_by_user_data(&instance)) continue;
  }

  void addPump() { g_idle_add(onSocketIdle, &instance); }

  void press(const std::string& type) const {
    sendZephMsg(server, zephMsg("id: 'e' buttonCallback { type: " + type + " }"));
  }

  // What the script has heard after one more turn of the loop.
  std::vector<std::string> heardInATurn() {
    log.clear();
    g_main_context_iteration(nullptr, FALSE);
    return logged();
  }
};

TEST_F(PumpOnTheLoopTest, aTurnHandlesOneMessage) {
  addPump();
  for (const char* type : {"SIMPLE", "DOUBLE"}) press(type);
  EXPECT_THAT(heardInATurn(), ElementsAre("SIMPLE"));
  EXPECT_THAT(heardInATurn(), ElementsAre("DOUBLE"));
  EXPECT_THAT(heardInATurn(), ElementsAre());
}

TEST_F(PumpOnTheLoopTest, twoPumpsHandleTwoMessagesInTheirOrder) {
  for (int pump = 0; pump < 2; ++pump) addPump();
  for (const char* type : {"SIMPLE", "DOUBLE", "TRIPLE"}) press(type);
  EXPECT_THAT(heardInATurn(), ElementsAre("SIMPLE", "DOUBLE"));
  EXPECT_THAT(heardInATurn(), ElementsAre("TRIPLE"));
}

TEST_F(PumpOnTheLoopTest, aTimerThatIsDueComesFirst) {
  addPump();
  run("setTimeout(0, function() { log('timer'); })");
  press("SIMPLE");
  EXPECT_THAT(heardInATurn(), ElementsAre("timer"));
  EXPECT_THAT(heardInATurn(), ElementsAre("SIMPLE"));
}

}  // namespace
}  // namespace morvik::test
