// What is answered to whoever asks who is there and how the device stands.
#include "device/questions.h"

#include <gmock/gmock.h>

#include "bench.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class QuestionsTest : public ::testing::Test {
 protected:
  std::string answer(const std::string& line) {
    bench_.events.all.clear();
    const Outcome outcome = stimulate(bench_.device, line);
    EXPECT_TRUE(outcome.done) << outcome.text;
    EXPECT_THAT(bench_.events.all, IsEmpty()) << "a question changes nothing";
    EXPECT_THAT(bench_.said(), IsEmpty());
    return outcome.text;
  }

  Bench bench_;
};

TEST_F(QuestionsTest, appsListsWhoIsThere) {
  bench_.pass(milliseconds(12345));
  EXPECT_EQ(answer("apps"),
            "app 1  interactive, here for 12 s\napp 2  interactive, here for 12 s\n");
  bench_.stimulus("app 2 stop");
  bench_.command("led { light { color: 'rde' } }");
  bench_.stimulus("app 1 call INCOMING aunt");
  EXPECT_EQ(answer("apps"),
            "app 1  interactive, here for 12 s, is called by aunt, 1 doubt\n"
            "app 2  connected, here for 12 s\n");
  bench_.device.applicationLeft(1);
  bench_.device.applicationLeft(2);
  EXPECT_EQ(answer("apps"), "no application is connected\n");
}

TEST_F(QuestionsTest, stateIsShortWhileNothingHappens) {
  EXPECT_EQ(answer("state"),
            "LED          not lit yet\n"
            "ears         left 0, right 0\n"
            "player       stopped\n"
            "messages     0, 0 unread\n"
            "contacts     0\n"
            "credentials  none\n");
}

TEST_F(QuestionsTest, stateHasALineForEverythingThatGoesOn) {
  for (const char* line : {"message anna hi", "contact anna", "credentials facebookToken=SECRET",
                           "credentials withhold"}) {
    stimulate(bench_.device, line);
  }
  for (const char* command :
       {"led { fade { color: 'blue' period: 500 } }", "ears { left: 5 }",
        "dock { led { pulse { color: 'red' period: 200 pulse: 3 } } }", "dock { move { cmd: UP } }",
        "tts { action: START text: 'hello' }", "asr { dictionary: 'yes|no' }",
        "multimedia { play { url: '/music/morning/kettle.mp3' } }",
        "multimedia { record { url: '' } }", "webcam { photo: 'here' }",
        "serial { open { port: '/dev/ttyS1' baud: 9600 } }"}) {
    bench_.command(command);
  }
  bench_.pass(milliseconds(200));
  stimulate(bench_.device, "refuse BUSY ping 2");
  stimulate(bench_.device, "delay 700 ping");
  EXPECT_EQ(answer("state"),
            "LED          blue, fades for 300 ms more\n"
            "ears         left 0, right 0, turn to 5 and 0\n"
            "dock         moves UP for 1800 ms more\n"
            "dock LED     red, pulses for 400 ms more\n"
            "speech       says \"hello\"\n"
            "listening    for 29800 ms more: \"yes|no\"\n"
            "player       plays /music/morning/kettle.mp3\n"
            "recorder     records for 2800 ms more\n"
            "camera       takes \"here\"\n"
            "serial       /dev/ttyS1 at 9600 baud\n"
            "messages     1, 1 unread\n"
            "contacts     1\n"
            "credentials  facebookToken, withheld\n"
            "faults       refuses ping with BUSY, 2 times; answers ping after 700 ms\n");
  bench_.command("multimedia { pause {} }");
  EXPECT_THAT(answer("state"), HasSubstr("player       pauses /music/"));
}

TEST_F(QuestionsTest, whatAnApplicationSentStaysOnItsLine) {
  bench_.command("led { light { color: 'a\\nb' } }");
  bench_.command("tts { action: START text: '" + std::string(5000, 'x') + "' }");
  const std::string text = answer("state");
  EXPECT_THAT(text, HasSubstr("LED          a?b\n"));
  EXPECT_LT(text.size(), 1000U);
}

TEST_F(QuestionsTest, areNotForOneApplication) {
  EXPECT_THAT(bench_.refused("app 1 state"), HasSubstr("leave \"app 1\" out"));
  EXPECT_THAT(bench_.refused("apps 1"), HasSubstr("what is 1?"));
}

TEST_F(QuestionsTest, areToldFromWhatDoesSomething) {
  for (const char* line : {"apps", " state ", "help", "help button", "state\r"}) {
    EXPECT_TRUE(isQuestion(line)) << line;
  }
  for (const char* line : {"", "button SIMPLE", "app 1 apps", "nonsense", "# help"}) {
    EXPECT_FALSE(isQuestion(line)) << line;
  }
}

}  // namespace
}  // namespace morvik::test
