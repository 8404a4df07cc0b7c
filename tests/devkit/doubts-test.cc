// What the virtual device takes and a real one may not: answered all the same, and told.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "bench.h"
#include "device/colors.h"
#include "device/doubt.h"
#include "device/view.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class DoubtsTest : public ::testing::Test {
 protected:
  // What is told of a command, which is answered with OK whatever that is.
  Lines doubtsOf(const std::string& command, AppNumber from = 1) {
    bench_.events.all.clear();
    const Lines said = bench_.command(command, from);
    EXPECT_THAT(said, Contains(HasSubstr("re response { code: OK }"))) << command;
    Lines texts;
    for (const Doubted& doubted : bench_.events.of<Doubted>()) {
      EXPECT_EQ(doubted.application, from);
      texts.push_back(doubted.doubt.text);
    }
    return texts;
  }
  Lines doubtsOfPlaying(const std::string& url) {
    return doubtsOf("multimedia { play { url: '" + url + "' } }");
  }

  Bench bench_;
};

TEST_F(DoubtsTest, aColourThatNotEverybodyKnows) {
  EXPECT_THAT(doubtsOf("led { light { color: 'rde' } }"),
              ElementsAre("the LED may not know the colour rde: write a name such as red, or "
                          "#rrggbb"));
  EXPECT_THAT(doubtsOf("dock { led { pulse { color: '' period: 5 pulse: 1 } } }"),
              ElementsAre(HasSubstr("colour \"\":")));
  for (const char* color :
       {"red", "RebeccaPurple", "aliceblue", "yellowgreen", "#0F0", "#00ff7f"}) {
    EXPECT_THAT(doubtsOf("led { light { color: '" + std::string(color) + "' } }"), IsEmpty())
        << color;
  }
  for (const char* color : {"#00ff7", "#ggg", "rgb(1, 2, 3)", "red ", "a\xff"}) {
    EXPECT_FALSE(isKnownColor(color)) << color;
  }
}

TEST_F(DoubtsTest, aChangeOfTheLedThatTakesNoTime) {
  EXPECT_THAT(doubtsOf("led { fade { color: 'red' period: 0 } }"),
              ElementsAre("nothing is to be seen of a fade of 0 ms, and a device may refuse it: "
                          "give it some time, or use light"));
  EXPECT_THAT(doubtsOf("led { fade { color: 'red' period: -5 } }"), IsEmpty()) << "the same fact";
  EXPECT_THAT(doubtsOf("led { pulse { color: 'red' period: 9 pulse: 0 } }"),
              ElementsAre(HasSubstr("of 0 pulses of 9 ms,")));
  EXPECT_THAT(doubtsOf("led { fade { color: 'red' period: 1 } }"), IsEmpty());
  EXPECT_THAT(doubtsOf("led { light { color: 'red' } }"), IsEmpty());
}

TEST_F(DoubtsTest, anEarPositionOutOfReach) {
  EXPECT_THAT(doubtsOf("ears { left: 17 right: -1 }"),
              ElementsAre("the left ear is sent to 17, and a device may refuse what is not from 0 "
                          "to 16: stay within that",
                          HasSubstr("the right ear is sent to -1,")));
  EXPECT_THAT(doubtsOf("ears { left: 16 right: 0 }"), IsEmpty());
  bench_.pass(std::chrono::seconds(2));
  EXPECT_THAT(doubtsOf("ears { left: 2147483647 relative: true }"),
              ElementsAre(HasSubstr("left ear is sent to 2147483663,")));
  EXPECT_THAT(doubtsOf("ears { left: -3 relative: true }"), IsEmpty());
  bench_.command("ears { reset: true left: 99 }");
  EXPECT_EQ(bench_.events.of<Doubted>().size(), 0U) << "what a reset carries is no position";
}

TEST_F(DoubtsTest, aSerialPortThatNoDeviceHas) {
  EXPECT_THAT(doubtsOf("serial { open { port: 'ttyS1' baud: 9600 } }"),
              ElementsAre("no device has a serial port ttyS1: write the whole path of one, such as "
                          "/dev/ttyS1"));
  EXPECT_THAT(doubtsOf("serialCallback { readline { port: '/dev/ttyS32' data: '' } }"),
              ElementsAre(HasSubstr("port /dev/ttyS32:")));
  for (const char* port : {"/dev/ttyS0", "/dev/ttyUSB31", "/dev/ttyACM9", "/dev/serial/by-id/x"}) {
    EXPECT_THAT(doubtsOf("serial { open { port: '" + std::string(port) + "' baud: 9600 } }"),
                IsEmpty())
        << port;
  }
}

TEST_F(DoubtsTest, aFileToPlayThatIsNotThere) {
  const TemporaryFolder folder;
  std::ofstream(folder / "ding.mp3") << "ding";
  std::filesystem::create_directory(folder.path() / "sounds");
  bench_.device.setAppFolders({{"clock", folder.path()}});
  EXPECT_THAT(doubtsOfPlaying("/usr/morvik/apps/clock/ding.mp3"), IsEmpty());
  EXPECT_THAT(doubtsOfPlaying("/usr/morvik/apps/clock/sounds/../ding.mp3"), IsEmpty());
  EXPECT_THAT(
      doubtsOfPlaying("/usr/morvik/apps/clock/dong.mp3"),
      ElementsAre("play: ./dong.mp3 is not in the application's folder: put the file there, "
                  "or correct the name"));
  for (const char* name : {"sounds", "", "../elsewhere/ding.mp3", "/ding.mp3"}) {
    EXPECT_THAT(doubtsOfPlaying("/usr/morvik/apps/clock/" + std::string(name)),
                ElementsAre(HasSubstr("the application's folder")))
        << name;
  }
  EXPECT_THAT(doubtsOfPlaying("/usr/morvik/apps/other/ding.mp3"),
              ElementsAre(HasSubstr("an application that is not here")));
  const std::string cut = "/usr/morvik/apps/clock/" + std::string(231, 'x');
  EXPECT_THAT(doubtsOfPlaying(cut), ElementsAre(HasSubstr("cut at 254 characters")));
}

TEST_F(DoubtsTest, nothingIsToldOfFoldersThatNobodyKnows) {
  EXPECT_THAT(doubtsOfPlaying("/usr/morvik/apps/clock/dong.mp3"), IsEmpty());
}

TEST_F(DoubtsTest, anAddressThatIsNoneByItsForm) {
  for (const char* good : {"http://radio.example.org/jazz", "https://a:1/b?c=d",
                           "/music/morning/kettle.mp3", "/proc/self/status"}) {
    EXPECT_THAT(doubtsOfPlaying(good), IsEmpty()) << good;
  }
  const std::pair<const char*, const char*> bad[] = {
      {"", "names nothing"},
      {"ding.mp3", "write ./NAME"},
      {"../ding.mp3", "write ./NAME"},
      {"/nowhere/ding.mp3", "is not on this machine"},
      {"htp://host/a", "begins with htp:"},
      {"http:///a", "names no host"},
      {"http://host:port/a", "is not well-formed"},
  };
  for (const auto& [url, why] : bad) {
    EXPECT_THAT(doubtsOfPlaying(url), ElementsAre(HasSubstr(why))) << url;
  }
}

TEST_F(DoubtsTest, eachFactIsToldOnceToEachApplication) {
  EXPECT_EQ(doubtsOf("led { light { color: 'rde' } }").size(), 1U);
  EXPECT_THAT(doubtsOf("led { light { color: 'rde' } }"), IsEmpty());
  EXPECT_THAT(doubtsOf("dock { led { light { color: 'rde' } } }"), IsEmpty());
  EXPECT_EQ(doubtsOf("led { light { color: 'rde' } }", 2).size(), 1U);
}

TEST_F(DoubtsTest, thousandsOfOneKindHideNoOther) {
  std::size_t told = 0;
  for (int i = 0; i < 1000; ++i) {
    const Lines texts = doubtsOf("led { light { color: 'c" + std::to_string(i) + "' } }");
    told += texts.size();
    EXPECT_EQ(told == kMostDoubts && !texts.empty(),
              !texts.empty() && texts.back().ends_with("(more of this kind are not told)"));
  }
  EXPECT_EQ(told, kMostDoubts);
  EXPECT_EQ(bench_.device.application(1)->doubts.size(), kMostDoubts);
  EXPECT_EQ(doubtsOf("ears { left: 17 }").size(), 1U);
}

TEST_F(DoubtsTest, theViewKeepsThemAsLongAsTheApplicationIsThere) {
  doubtsOf("led { light { color: 'rde' } }");
  EXPECT_THAT(textOf(toJson(viewOf(bench_.device))),
              HasSubstr(R"("doubts":[{"about":"color","value":"rde","text":"the LED may)"));
  bench_.device.applicationLeft(1);
  EXPECT_THAT(textOf(toJson(viewOf(bench_.device))), Not(HasSubstr("doubts")));
}

TEST_F(DoubtsTest, aTextThatIsLongOrNoTextIsShortened) {
  const Lines texts = doubtsOf("led { light { color: '" + std::string(5000, 'x') + "' } }");
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_LT(texts[0].size(), 200U);
  EXPECT_LT(bench_.device.application(1)->doubts[0].value.size(), 300U);
}

}  // namespace
}  // namespace morvik::test
