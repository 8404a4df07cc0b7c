// morvik.webcam: the photo, and the objects that answer it.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow photo(const std::string& arguments, const std::string& sent, const std::string& logged) {
  return {"photo(" + arguments + ")",
          "webcam { photo: \"" + sent + "\" }",
          {"MESSAGE WEBCAM: photo url[" + logged + "]"}};
}

SentRow photo(const std::string& arguments, const std::string& url) {
  return photo(arguments, url, url);
}

// An answer is an object for each result, and an event's holds the picture.
std::vector<AnsweredRow> objects() {
  const std::string opening = "DEBUG EventCallbackWebcam Webcam";
  const std::string response = "DEBUG has_response Webcam";
  const std::string event = "DEBUG has_event Webcam";
  const std::string ok = R"(MESSAGE JSLOG: object {"type":"OK"})";
  const std::string terminated = R"(MESSAGE JSLOG: object {"type":"TERMINATED","data":{}})";
  return {
      {"photo('x', tell)",
       "response { code: OK description: 'left out' }",
       {opening, response, ok}},
      {"",
       "event { code: ERROR description: 'x' }",
       {opening, event, R"(MESSAGE JSLOG: object {"type":"ERROR","description":"x","data":{}})"}},
      {"",
       "event { code: TERMINATED } response { code: OK }",
       {opening, response, ok, event, terminated}},
      {"", "ping { }", {opening}},
      {"photo('x', tell)", "response { }", {opening, response, "MESSAGE JSLOG: object {}"}},
      {"photo('x', tell)", "event { code: TERMINATED }", {opening, event, terminated}},
  };
}

}  // namespace

Feature webcamFeature() {
  return {
      .name = "webcam",
      .functions = "photo",
      .sends = {photo("'x'", "x"), photo("'x', f", "x"), photo("'./x', f", "./x"),
                photo("'http://h/x?y'", "http://h/x?y"), photo("undefined", "undefined"),
                photo("'./a/../b'", "./a/../b"), photo("''", ""), photo("'a\\0b'", "a b"),
                photo("'\\u0141'", "A"), photo("'\\u0080\\u00ff'", "\\200\\377", "\x80\xff"),
                photo("-1.5", "-1.5"), photo("f", "function() {}")},
      .refuses = wrong({"photo()", "photo('x', 1)", "photo('x', null)", "photo('x', f, f)"}) +
                 needMode({"photo('x')", "photo('x', f)", "photo(bad)"}) +
                 throwing({"photo(bad)", "photo(bad, f)"}),
      .answers = objects() + nobodyWaits({"photo('x')"}),
  };
}

}  // namespace morvik::test
