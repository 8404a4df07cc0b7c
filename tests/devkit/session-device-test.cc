// The device of a session: a real one behind the relay is known by what its applications send.
#include "run/session-device.h"

#include "app-client.h"
#include "loop.h"
#include "server/device-server.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

class RelayedDeviceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string trouble;
    ASSERT_FALSE(real_.listen(0, trouble)) << trouble;
    device_ = makeRelayedDevice("127.0.0.1:" + std::to_string(real_.port()), trouble);
    ASSERT_NE(device_, nullptr) << trouble;
  }

  // An application asks for a colour.
  void light(const std::string& color) {
    app_.emplace(loop_, device_->port());
    app_->ask(startRequest("our-id"));
    app_->ask(lightRequest("our-id", color));
  }

  Loop loop_;
  DeviceServer real_;
  std::unique_ptr<SessionDevice> device_;
  std::optional<AppClient> app_;
};

TEST_F(RelayedDeviceTest, isSeenByWhatApplicationsSend) {
  light("red");
  const DeviceView view = device_->view();
  EXPECT_EQ(view.state.led.color, "red");
  EXPECT_EQ(view.applications.size(), 1U);
  EXPECT_FALSE(device_->isVirtual());
  const Outcome outcome = device_->stimulate("button SIMPLE");
  EXPECT_FALSE(outcome.done);
  EXPECT_THAT(outcome.text, HasSubstr("this is a real device"));
  EXPECT_THAT(device_->stimulate("state").text, HasSubstr("LED          red\n"));
}

TEST_F(RelayedDeviceTest, isNotDoubted) {
  light("rde");
  EXPECT_EQ(device_->view().applications.at(1).doubts.size(), 0U);
  EXPECT_EQ(real_.device().application(1)->doubts.size(), 1U);
}

class VirtualDeviceTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(device, nullptr) << trouble; }

  Loop loop;
  TemporaryFolder state;
  std::string trouble;
  std::unique_ptr<SessionDevice> device = makeVirtualDevice(0, state.path(), trouble);
};

TEST_F(VirtualDeviceTest, isTheOneThatApplicationsUse) {
  AppClient app(loop, device->port());
  app.ask(startRequest("our-id"));
  EXPECT_TRUE(device->stimulate("button SIMPLE").done);
  EXPECT_TRUE(app.receive().has_buttoncallback());
  EXPECT_NE(device->portOf(1), 0);
  EXPECT_EQ(device->portOf(2), 0);
}

TEST_F(VirtualDeviceTest, saysThatItsPortIsTaken) {
  EXPECT_EQ(makeVirtualDevice(device->port(), state.path(), trouble), nullptr);
  EXPECT_THAT(trouble, HasSubstr(" is in use"));
}

}  // namespace
}  // namespace morvik::test
