// What is known of a real device by its messages alone.
#include "server/shadow.h"

#include <google/protobuf/text_format.h>

#include "loop.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

// Application 1, with interactive mode.
class ShadowTest : public ::testing::Test {
 protected:
  ShadowTest() {
    events_.raise(Came{1});
    ask("id: 's' interactiveMode { action: START interactiveId: 'granted' }");
    answer("correlationId: 's' response { code: OK }");
  }

  void ask(const std::string& text) { events_.raise(Received{1, messageOf(text)}); }
  // With the application's grant.
  void command(const std::string& text) { ask("interactiveId: 'granted' " + text); }
  void answer(const std::string& text) { events_.raise(Sent{1, messageOf("id: 'd' " + text)}); }

  const DeviceState& state() { return shadow_.device().state(); }
  bool isUnderway(Work work) { return shadow_.device().works().find(work).has_value(); }
  std::string grant() { return shadow_.device().application(1)->interactiveId; }

  void turnBothEarsTo10() {
    command("id: 'e' ears { left: 10 right: 10 }");
    answer("correlationId: 'e' response { code: OK }");
  }

  Loop loop_;
  Events events_{[] { return std::chrono::milliseconds(0); }};
  Shadow shadow_{events_};

 private:
  static PassedMessage messageOf(const std::string& text) {
    auto message = std::make_shared<zeph::ZephMsg>();
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(text, message.get())) << text;
    return message;
  }
};

TEST_F(ShadowTest, countsACommandOnceItIsTaken) {
  command("id: 'a' led { light { color: 'red' } }");
  EXPECT_EQ(state().led.color, "");
  answer("correlationId: 'a' response { code: OK }");
  EXPECT_EQ(state().led.color, "red");
}

TEST_F(ShadowTest, leavesOutWhatIsRefused) {
  for (const char* refusal :
       {"response { code: BUSY }", "response {}", "event { code: CANCELLED }"}) {
    command("id: 'a' led { light { color: 'red' } }");
    answer(std::string("correlationId: 'a' ") + refusal);
    answer("correlationId: 'a' response { code: OK }");
    EXPECT_EQ(state().led.color, "") << refusal;
  }
}

TEST_F(ShadowTest, hasInteractiveModeAsTheDeviceGivesAndTakesIt) {
  EXPECT_EQ(grant(), "granted");
  answer("interactiveMode { action: STOP }");
  EXPECT_EQ(grant(), "");
  ask("id: 't' interactiveMode { action: START interactiveId: 'again' }");
  answer("correlationId: 't' response { code: BUSY }");
  EXPECT_EQ(grant(), "");
}

TEST_F(ShadowTest, hasTheEarsWhereTheyStopped) {
  turnBothEarsTo10();
  EXPECT_EQ(state().earsTowards.left, 10);
  answer("earsCallback { type: START_LEFT step: 0 length: 10 }");
  answer("earsCallback { type: STOP_LEFT step: 7 length: 7 }");
  EXPECT_EQ(state().ears.left, 7);
  EXPECT_TRUE(isUnderway(Work::kEars)) << "the right one still turns";
  answer("earsCallback { type: BLOCKED_RIGHT step: 3 }");
  EXPECT_FALSE(isUnderway(Work::kEars));
  answer("correlationId: 'e' event { code: TERMINATED }");
  EXPECT_EQ(state().ears.left, 7);
  EXPECT_EQ(state().ears.right, 3);
}

TEST_F(ShadowTest, hasEarsThatAreTurnedByHand) {
  answer("earsCallback { type: STOP_RIGHT step: 12 length: 12 }");
  EXPECT_EQ(state().ears.right, 12);
}

TEST_F(ShadowTest, hasThePositionsThatAnEndTells) {
  command("id: 'e' ears { left: 1 right: 1 reset: true }");
  answer("correlationId: 'e' response { code: OK } ears { left: 0 right: 0 }");
  answer("correlationId: 'e' event { code: TERMINATED } ears { left: 2 right: 1 }");
  EXPECT_EQ(state().ears.left, 2);
  EXPECT_EQ(state().ears.right, 1);
}

TEST_F(ShadowTest, waitsForTheEndOfWhatItCannotMeasure) {
  command("id: 't' tts { action: START text: 'hello' }");
  answer("correlationId: 't' response { code: OK }");
  ASSERT_TRUE(isUnderway(Work::kTts));
  EXPECT_FALSE(shadow_.device().works().find(Work::kTts)->length.has_value());
  answer("correlationId: 'other' event { code: TERMINATED }");
  EXPECT_TRUE(isUnderway(Work::kTts));
  answer("correlationId: 't' event { code: TERMINATED }");
  EXPECT_FALSE(isUnderway(Work::kTts));
}

TEST_F(ShadowTest, listensUntilSomethingWasUnderstood) {
  command("id: 'h' asr { dictionary: '<g/>' lang: 'en' }");
  answer("correlationId: 'h' response { code: OK }");
  EXPECT_TRUE(isUnderway(Work::kAsr));
  answer("correlationId: 'h' asrCallback { recognition { text: 'yes' confident: 90 } }");
  EXPECT_FALSE(isUnderway(Work::kAsr));
}

TEST_F(ShadowTest, hasThePlayerAsItTells) {
  using enum Player::Mode;
  answer("multimediaCallback { action: PLAY }");
  EXPECT_EQ(state().player.mode, kPlaying);
  answer("multimediaCallback { action: PAUSE }");
  EXPECT_EQ(state().player.mode, kPaused);
  answer("multimediaCallback { action: MUSIC_UPDATE }");
  EXPECT_EQ(state().player.mode, kPaused);
  answer("multimediaCallback { action: STOP }");
  EXPECT_EQ(state().player.mode, kStopped);
}

TEST_F(ShadowTest, hasTheDockAndTheCallAsTheyTell) {
  answer("dock { status: 2 change: 1 }");
  EXPECT_EQ(state().dock.status, 2);
  const auto call = [this] { return shadow_.device().application(1)->call; };
  answer("m2mCallback { type: INCOMING correspondant: 'ann' }");
  EXPECT_EQ(call().state, Call::State::kRinging);
  answer("m2mCallback { type: BEGINNING correspondant: 'ann' }");
  EXPECT_EQ(call().state, Call::State::kTalking);
  EXPECT_EQ(call().correspondant, "ann");
  answer("m2mCallback { type: TERMINATED correspondant: 'ann' }");
  EXPECT_EQ(call().state, Call::State::kNone);
}

TEST_F(ShadowTest, tellsItsOwnChanges) {
  struct Parts : Observer {
    void happened(const Event& event) override {
      if (const auto* changed = std::get_if<Changed>(&event.what)) parts.push_back(changed->part);
    }
    std::vector<std::string> parts;
  } heard;
  const Observation hears(events_, heard);
  command("id: 'a' led { light { color: 'red' } }");
  EXPECT_THAT(heard.parts, IsEmpty());
  answer("correlationId: 'a' response { code: OK }");
  EXPECT_THAT(heard.parts, Contains("led"));
}

TEST_F(ShadowTest, keepsFewCommandsThatNobodyAnswers) {
  for (int i = 0; i <= 256; ++i) {
    command("id: 'c" + std::to_string(i) + "' led { light { color: 'red' } }");
  }
  answer("correlationId: 'c0' response { code: OK }");
  EXPECT_EQ(state().led.color, "");
  answer("correlationId: 'c1' response { code: OK }");
  EXPECT_EQ(state().led.color, "red");
}

}  // namespace
}  // namespace morvik::test
