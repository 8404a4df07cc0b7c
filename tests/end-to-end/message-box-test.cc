// morvik.message: what `new` writes to standard output, in whatever way the application ends.

#include <csignal>
#include <string>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

class MessageBoxOutputTest : public DeviceTest {
 protected:
  void sendOne() {
    interactive("morvik.message.new({uuid: 'u', objects: ['1']}, 'hi')", {"message"});
    sent = device.receive();
  }

  zeph::ZephMsg sent;
};

TEST_F(MessageBoxOutputTest, isOutWhenTheApplicationDiesOfItsConnection) {
  sendOne();
  ASSERT_EQ(sent.morvikmessagequery().message().content().content(), "hi");
  EXPECT_EQ(endOf(app, [this] { device.close(); }), killedBy(SIGTRAP));
  EXPECT_EQ(host().output().awaitEnd(), sent.DebugString());
}

TEST_F(MessageBoxOutputTest, isOutWhileTheApplicationLivesOn) {
  sendOne();
  host().output().await(sent.DebugString());
  EXPECT_TRUE(app.alive());
}

}  // namespace
}  // namespace morvik::test
