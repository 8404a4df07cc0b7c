// morvik.webcam: a photo, and the picture that its event hands to the script.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class WebcamTest : public FeatureTest {
 protected:
  WebcamTest() : FeatureTest("webcam") {}
};

TEST_F(WebcamTest, isThereOnlyWithItsAccess) { expectFunctions("photo"); }

TEST_F(WebcamTest, callsSendAUrlUnchanged) {
  expectSends(
      {{"photo('http://h/x?y')",
        R"(webcam { photo: "http://h/x?y" })",
        {"MESSAGE WEBCAM: photo url[http://h/x?y]"}},
       {"photo('./x', f)", R"(webcam { photo: "./x" })", {"MESSAGE WEBCAM: photo url[./x]"}},
       {"photo(undefined)",
        R"(webcam { photo: "undefined" })",
        {"MESSAGE WEBCAM: photo url[undefined]"}},
       {"photo('\\u0141')", R"(webcam { photo: "A" })", {"MESSAGE WEBCAM: photo url[A]"}}});
}

TEST_F(WebcamTest, callsAreRefusedInTheirOrder) {
  expectRefuses(wrong({"photo()", "photo('x', 1)", "photo('x', f, f)"}) +
                needMode({"photo('x')", "photo('x', f)"}) +
                std::vector<RefusedRow>{{"photo(bad)", kMode, "no text"}});
}

TEST_F(WebcamTest, anAnswerIsAnObjectForEachResult) {
  const std::string opening = "DEBUG EventCallbackWebcam Webcam";
  const std::string response = "DEBUG has_response Webcam";
  const std::string event = "DEBUG has_event Webcam";
  expectAnswered(
      {{"photo('x', tell)",
        "response { code: OK description: 'left out' }",
        {opening, response, R"(MESSAGE JSLOG: object {"type":"OK"})"}},
       {"",
        "event { code: ERROR description: 'x' }",
        {opening, event, R"(MESSAGE JSLOG: object {"type":"ERROR","description":"x","data":{}})"}},
       {"",
        "event { code: TERMINATED } response { code: OK }",
        {opening, response, R"(MESSAGE JSLOG: object {"type":"OK"})", event,
         R"(MESSAGE JSLOG: object {"type":"TERMINATED","data":{}})"}},
       {"", "ping { }", {opening}},
       {"photo('x')", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

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
