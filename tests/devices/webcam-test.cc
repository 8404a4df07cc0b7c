// morvik.webcam: the photo, and the objects that answer it.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class WebcamTest : public FeatureTest {};

TEST_F(WebcamTest, photoSendsItsTextAsItIs) {
  expectSends({
      {"morvik.webcam.photo('x')", "webcam { photo: \"x\" }", {"MESSAGE WEBCAM: photo url[x]"}},
      {"morvik.webcam.photo('x', f)", "webcam { photo: \"x\" }", {"MESSAGE WEBCAM: photo url[x]"}},
      {"morvik.webcam.photo(undefined)",
       "webcam { photo: \"undefined\" }",
       {"MESSAGE WEBCAM: photo url[undefined]"}},
      {"morvik.webcam.photo('./a/../b')",
       "webcam { photo: \"./a/../b\" }",
       {"MESSAGE WEBCAM: photo url[./a/../b]"}},
      {"morvik.webcam.photo('')", "webcam { photo: \"\" }", {"MESSAGE WEBCAM: photo url[]"}},
      {"morvik.webcam.photo('a\\0b')",
       "webcam { photo: \"a b\" }",
       {"MESSAGE WEBCAM: photo url[a b]"}},
      {"morvik.webcam.photo('\\u0141')",
       "webcam { photo: \"A\" }",
       {"MESSAGE WEBCAM: photo url[A]"}},
      {"morvik.webcam.photo('\\u0080\\u00ff')",
       "webcam { photo: \"\\200\\377\" }",
       {"MESSAGE WEBCAM: photo url[\x80\xff]"}},
      {"morvik.webcam.photo(-1.5)",
       "webcam { photo: \"-1.5\" }",
       {"MESSAGE WEBCAM: photo url[-1.5]"}},
      {"morvik.webcam.photo(f)",
       "webcam { photo: \"function() {}\" }",
       {"MESSAGE WEBCAM: photo url[function() {}]"}},
  });
}

TEST_F(WebcamTest, refusesInItsOrder) {
  expectRefused({"morvik.webcam.photo()", "morvik.webcam.photo('x', 1)",
                 "morvik.webcam.photo('x', null)", "morvik.webcam.photo('x', f, f)"});
}

TEST_F(WebcamTest, needsInteractiveMode) {
  expectNeedsInteractive(
      {"morvik.webcam.photo('x')", "morvik.webcam.photo('x', f)", "morvik.webcam.photo(bad)"});
}

TEST_F(WebcamTest, aTextThatCannotBeReadSendsNothing) {
  expectPassesExceptions({"morvik.webcam.photo(bad)", "morvik.webcam.photo(bad, f)"});
}

TEST_F(WebcamTest, anAnswerIsAnObjectAndAnEventsHoldsThePicture) {
  const std::string opening = "DEBUG EventCallbackWebcam Webcam";
  expectAnswered(
      "morvik.webcam.photo('x', tell)",
      {
          {"response { code: OK description: 'left out' }",
           {opening, "DEBUG has_response Webcam", "MESSAGE JSLOG: object {\"type\":\"OK\"}"}},
          {"response { }", {opening, "DEBUG has_response Webcam", "MESSAGE JSLOG: object {}"}},
          {"event { code: TERMINATED }",
           {opening, "DEBUG has_event Webcam",
            "MESSAGE JSLOG: object {\"type\":\"TERMINATED\",\"data\":{}}"}},
          {"event { code: ERROR description: 'x' }",
           {opening, "DEBUG has_event Webcam",
            "MESSAGE JSLOG: object {\"type\":\"ERROR\",\"description\":\"x\",\"data\":{}}"}},
          {"event { code: TERMINATED } response { code: OK }",
           {opening, "DEBUG has_response Webcam", "MESSAGE JSLOG: object {\"type\":\"OK\"}",
            "DEBUG has_event Webcam",
            "MESSAGE JSLOG: object {\"type\":\"TERMINATED\",\"data\":{}}"}},
          {"ping { }", {opening}},
      });
}

TEST_F(WebcamTest, thePictureCanBeHandedOn) {
  becomeInteractive("granted");
  run("var picture; morvik.webcam.photo('x', function(e) { picture = e.data; })");
  zeph::ZephMsg event;
  event.mutable_event()->set_code(zeph::TERMINATED);
  answer(*sent(), event);
  run("morvik.multimedia.play(picture)");
  expectOneMessage("multimedia { play { url: \"/tmp/picture.jpg\" } }");
}

TEST_F(WebcamTest, withoutAFunctionNobodyWaits) {
  expectAnswered("morvik.webcam.photo('x')",
                 {{"response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

TEST_F(WebcamTest, hasThisFunction) {
  EXPECT_EQ(run("Object.keys(morvik.webcam).join()"), "photo");
}

}  // namespace
}  // namespace morvik::test
