// How the device answers, without sockets and without waiting.
#include "device/device.h"

#include "app-client.h"
#include "bench.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

class DeviceTest : public ::testing::Test {
 protected:
  DeviceTest() {
    device_.applicationCame(1);
    ask(1, startRequest("granted"));
    outlet_.sent.clear();
  }

  // The one message that answers; an empty one when there are none or more.
  zeph::ZephMsg ask(AppNumber from, const zeph::ZephMsg& request) {
    outlet_.sent.clear();
    receive(device_, from, request);
    EXPECT_THAT(outlet_.sent, SizeIs(1));
    if (outlet_.sent.size() != 1) return {};
    EXPECT_EQ(outlet_.sent[0].to, from);
    EXPECT_FALSE(outlet_.sent[0].message.id().empty());
    return outlet_.sent[0].message;
  }

  void expectResponse(const zeph::ZephMsg& request, zeph::VReturnCode code, AppNumber from = 1) {
    const zeph::ZephMsg answer = ask(from, request);
    EXPECT_EQ(answer.correlationid(), request.id());
    ASSERT_TRUE(answer.response().has_code());
    EXPECT_EQ(answer.response().code(), code) << answer.ShortDebugString();
    // Whoever reads along learns why something is refused.
    EXPECT_EQ(answer.response().has_description(), code != zeph::OK);
  }

  // The command is answered OK, and its end told after the given time.
  void expectEffect(const zeph::ZephMsg& request, milliseconds length) {
    scheduler_.held.clear();
    expectResponse(request, zeph::OK);
    outlet_.sent.clear();
    ASSERT_THAT(scheduler_.held, SizeIs(1));
    EXPECT_EQ(scheduler_.held[0].delay, length);
    scheduler_.held[0].what();
    ASSERT_THAT(outlet_.sent, SizeIs(1));
    EXPECT_EQ(outlet_.sent[0].message.correlationid(), request.id());
    EXPECT_EQ(outlet_.sent[0].message.event().code(), zeph::TERMINATED);
    EXPECT_FALSE(outlet_.sent[0].message.has_response());
  }

  KeptOutlet outlet_;
  HeldScheduler scheduler_;
  Device device_{outlet_, scheduler_};
};

TEST_F(DeviceTest, grantsInteractiveModeUnderTheIdAskedFor) {
  device_.applicationCame(2);
  expectResponse(startRequest("mine"), zeph::OK, 2);
  EXPECT_EQ(device_.application(2)->interactiveId, "mine");
  EXPECT_EQ(device_.application(1)->interactiveId, "granted");
}

TEST_F(DeviceTest, aSecondStartReplacesTheGrant) {
  expectResponse(startRequest("newer"), zeph::OK);
  expectResponse(pingRequest("granted"), zeph::BAD_INTERACTIVEID);
  expectResponse(pingRequest("newer"), zeph::OK);
}

TEST_F(DeviceTest, refusesInteractiveModeWithoutAnIdOrAnAction) {
  zeph::ZephMsg withoutId = freshMessage();
  withoutId.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  expectResponse(withoutId, zeph::ERROR);
  zeph::ZephMsg withoutAction = freshMessage();
  withoutAction.mutable_interactivemode()->set_interactiveid("x");
  expectResponse(withoutAction, zeph::ERROR);
  EXPECT_EQ(device_.application(1)->interactiveId, "granted");
}

TEST_F(DeviceTest, answersAStopWithAStopNoticeAndTakesTheGrantBack) {
  const zeph::ZephMsg notice = ask(1, stopRequest("granted"));
  EXPECT_EQ(notice.interactivemode().action(), zeph::InteractiveMode::STOP);
  EXPECT_FALSE(notice.has_correlationid());
  EXPECT_FALSE(notice.has_response());
  expectResponse(pingRequest("granted"), zeph::BAD_INTERACTIVEID);
}

TEST_F(DeviceTest, aStopUnderAnotherIdStopsNothing) {
  expectResponse(stopRequest("other"), zeph::BAD_INTERACTIVEID);
  expectResponse(pingRequest("granted"), zeph::OK);
}

TEST_F(DeviceTest, answersPing) { expectResponse(pingRequest("granted"), zeph::OK); }

TEST_F(DeviceTest, answersTheInfoQueryWithItsInfosAlone) {
  const zeph::ZephMsg request = infoRequest("granted");
  const zeph::ZephMsg answer = ask(1, request);
  EXPECT_EQ(answer.correlationid(), request.id());
  EXPECT_FALSE(answer.has_response());
  std::vector<std::string> keys;
  for (const auto& info : answer.morvikinfo_response().infos()) {
    keys.push_back(info.key());
    EXPECT_FALSE(info.value().empty()) << info.key();
  }
  EXPECT_THAT(keys, ::testing::ElementsAre("name", "model", "serial", "firmware", "lang"));
}

TEST_F(DeviceTest, lightsTheLed) {
  expectResponse(lightRequest("granted", "red"), zeph::OK);
  EXPECT_EQ(device_.state().led.color, "red");
  EXPECT_EQ(device_.state().led.effect, "light");
  EXPECT_THAT(scheduler_.held, IsEmpty());
}

TEST_F(DeviceTest, aFadeEndsAfterItsPeriod) {
  expectEffect(fadeRequest("granted", "blue", 700), milliseconds(700));
  EXPECT_EQ(device_.state().led.color, "blue");
  EXPECT_EQ(device_.state().led.effect, "fade");
}

TEST_F(DeviceTest, aPulseEndsAfterAllItsPeriods) {
  expectEffect(pulseRequest("granted", "green", 300, 4), milliseconds(1200));
  EXPECT_EQ(device_.state().led.color, "green");
  EXPECT_EQ(device_.state().led.effect, "pulse");
}

TEST_F(DeviceTest, numbersBelowZeroCountAsZero) {
  expectEffect(fadeRequest("granted", "blue", -1), milliseconds(0));
  expectEffect(pulseRequest("granted", "blue", -5, -5), milliseconds(0));
  expectEffect(pulseRequest("granted", "blue", 500, -1), milliseconds(0));
}

TEST_F(DeviceTest, noEffectLastsLongerThanAMinute) {
  constexpr int kMost = std::numeric_limits<std::int32_t>::max();
  expectEffect(fadeRequest("granted", "blue", 60001), milliseconds(60000));
  expectEffect(pulseRequest("granted", "blue", kMost, kMost), milliseconds(60000));
}

TEST_F(DeviceTest, refusesALedCommandWithoutAColour) {
  zeph::ZephMsg nothing = pingRequest("granted");
  nothing.clear_ping();
  nothing.mutable_led();
  expectResponse(nothing, zeph::ERROR);
  nothing.mutable_led()->mutable_light();
  expectResponse(nothing, zeph::ERROR);
}

TEST_F(DeviceTest, refusesCommandsUnderAnIdThatItDidNotGrant) {
  expectResponse(lightRequest("other", "red"), zeph::BAD_INTERACTIVEID);
  expectResponse(fadeRequest("", "red", 1), zeph::BAD_INTERACTIVEID);
  expectResponse(pingRequest("other"), zeph::BAD_INTERACTIVEID);
  expectResponse(infoRequest("other"), zeph::BAD_INTERACTIVEID);
  EXPECT_EQ(device_.state().led.color, "");
  EXPECT_THAT(scheduler_.held, IsEmpty());
}

TEST_F(DeviceTest, theGrantOfOneApplicationIsNoGrantForAnother) {
  device_.applicationCame(2);
  expectResponse(lightRequest("granted", "red"), zeph::BAD_INTERACTIVEID, 2);
}

TEST_F(DeviceTest, noGrantMeansNoCommandEvenWithoutAnId) {
  device_.applicationCame(2);
  expectResponse(lightRequest("", "red"), zeph::BAD_INTERACTIVEID, 2);
}

TEST_F(DeviceTest, refusesAPayloadThatItDoesNotKnow) {
  zeph::ZephMsg request = freshMessage();
  request.set_interactiveid("granted");
  request.mutable_choreography();
  const zeph::ZephMsg answer = ask(1, request);
  EXPECT_EQ(answer.response().code(), zeph::ERROR);
  EXPECT_EQ(answer.response().description(), "this device has no answer to choreography");
}

TEST_F(DeviceTest, refusesAMessageWithoutAPayload) {
  zeph::ZephMsg request = freshMessage();
  request.set_recipient("somebody");
  expectResponse(request, zeph::ERROR);
}

TEST_F(DeviceTest, forgetsAnApplicationThatLeft) {
  device_.applicationLeft(1);
  EXPECT_EQ(device_.application(1), nullptr);
  device_.applicationCame(2);
  EXPECT_EQ(device_.application(2)->interactiveId, "");
}

TEST_F(DeviceTest, hearsNothingFromAnApplicationThatNeverCame) {
  receive(device_, 7, pingRequest("granted"));
  EXPECT_THAT(outlet_.sent, IsEmpty());
}

}  // namespace
}  // namespace morvik::test
