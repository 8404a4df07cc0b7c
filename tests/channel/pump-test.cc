// The pump: what a turn of it reads and dispatches, and how many turns the main loop gives it, with
// one connection and after a second one.
#include "channel/pump.h"

#include <sys/socket.h>

#include <algorithm>

#include "channel/connection.h"
#include "support/text-message.h"
#include "support/unit/frames.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

// One turn of the pump on the fixture's socket.
class PumpTest : public ScriptTest {
 protected:
  void write(const std::string& bytes) {
    ASSERT_EQ(::send(server, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }

  [[nodiscard]] std::size_t received() const {
    const auto texts = log.texts();
    return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), "message received"));
  }
};

TEST_F(PumpTest, aTurnTakesOneMessageAtMostAndThePumpStays) {
  write(frame(wireForm("id: 'a'")) + frame(wireForm("id: 'b'")));
  for (const std::size_t count : {1U, 2U, 2U}) {
    EXPECT_TRUE(onSocketIdle(&instance));
    EXPECT_EQ(received(), count);
  }
}

class CountingListener : public ZephMsgListener {
 public:
  explicit CountingListener(std::vector<std::string>& heard) : heard_(heard) {}
  bool onMessage(const zeph::ZephMsg& message) override {
    heard_.push_back(message.ShortDebugString());
    return true;
  }

 private:
  std::vector<std::string>& heard_;
};

TEST_F(PumpTest, whateverWasReadIsDispatched) {
  std::vector<std::string> heard;
  instance.addListener(std::make_unique<CountingListener>(heard));
  const std::string payloads[] = {"", wireForm("ping { }"), wireForm("correlationId: 'c'") + "\xc2",
                                  wireForm("interactiveMode { }")};
  for (const std::string& payload : payloads) {
    write(frame(payload));
    EXPECT_TRUE(onSocketIdle(&instance));
  }
  EXPECT_THAT(heard, ElementsAre("", "ping { }", "correlationId: \"c\""));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
}

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
