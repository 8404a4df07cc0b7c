// morvik.webcam: the picture of an event, handed on.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class WebcamTest : public FeatureTest {};

TEST_F(WebcamTest, thePictureCanBeHandedOn) {
  becomeInteractive("granted");
  run("var picture; morvik.webcam.photo('x', function(e) { picture = e.data; })");
  zeph::ZephMsg event;
  event.mutable_event()->set_code(zeph::TERMINATED);
  answer(*sent(), event);
  run("morvik.multimedia.play(picture)");
  expectOneMessage("multimedia { play { url: \"/tmp/picture.jpg\" } }");
}

}  // namespace
}  // namespace morvik::test
