// morvik.webcam: a photo, and the picture that its event hands to the script.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class WebcamTest : public FeatureTest {
 protected:
  WebcamTest() : FeatureTest("webcam") {}
};

TEST_F(WebcamTest, thePictureCanBeHandedOn) {
  interactive(
      "Object.prototype.mark = 1; morvik.webcam.photo('x', function(e) {"
      " log([e.mark, e.data.mark, Object.keys(e.data).length].join());"
      " morvik.multimedia.play(e.data); });",
      {"webcam", "multimedia"});
  device.event(device.receive(), "TERMINATED");
  EXPECT_EQ(app.logged(), ",,0");
  EXPECT_EQ(device.receive().multimedia().play().url(), "/tmp/picture.jpg");
}

}  // namespace
}  // namespace morvik::test
