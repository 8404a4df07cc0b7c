// morvik.multimedia: playing a recording and a file.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class MultimediaTest : public FeatureTest {
 protected:
  MultimediaTest() : FeatureTest("multimedia") {}
};

TEST_F(MultimediaTest, theRecordingCanBePlayed) {
  interactive(
      "morvik.multimedia.record(function(e) {"
      " log([e instanceof Object, Object.keys(e.data).length].join());"
      " morvik.multimedia.play(e.data, log); });",
      access());
  device.event(device.receive(), "TERMINATED");
  EXPECT_EQ(app.logged(), "false,0");
  EXPECT_EQ(receiveAndReply().multimedia().ShortDebugString(),
            R"(play { url: "/tmp/record.flac" })");
  EXPECT_EQ(app.logged(), "OK");
  app.waitForLog("MULTIMEDIA: *ascii play[/tmp/record.flac]");
}

TEST_F(MultimediaTest, aFileOfTheApplicationCanBePlayed) {
  interactive("morvik.multimedia.play(file.read('sub/a.mp3'));", access());
  EXPECT_EQ(device.receive().multimedia().play().url(), apps.path() + "/app1/sub/a.mp3");
}

}  // namespace
}  // namespace morvik::test
