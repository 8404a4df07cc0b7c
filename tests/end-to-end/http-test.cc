// http against a real web server: what scripts get of its responses, plain, chunked, redirected,
// large, in several charsets, failing or behind TLS, and what the server gets of their bodies.
#include <iostream>

#include "device/media-files.h"
#include "support/file-content.h"
#include "support/system/feature-test.h"
#include "support/text-message.h"
#include "support/web/nginx.h"
#include "support/web/recording-server.h"

namespace morvik::test {
namespace {

constexpr char kLocations[] = R"(
  types {
    text/html html; text/plain txt; text/xml xml;
    "text/plain; charset=iso-8859-1" latin1; "text/plain; charset='utf-8'" utf8;
    "text/plain; charset=Windows-1252" cp1252; "text/plain; charset=utf-16le" utf16;
    "text/plain; charset=utf8" utf8copy; "text/plain; charset=klingon" klingon;
  }
  ssi on; gzip on; gzip_min_length 1; gzip_types text/plain;
  location = /moved { return 302 /files/plain.txt; }
  location = /empty { return 204; }
  location = /forbidden { deny all; error_page 403 /files/refusal.txt; }
  location = /broken { default_type text/plain; return 500 "out of order"; }
  location = /mirror { default_type text/plain; return 200 "$request_method $http_x_one|$http_x_two|$http_user_agent|$http_accept"; }
  location = /silent { return 444; }
  location = /visit { default_type text/plain; add_header Set-Cookie "seen=yes; path=/";
                      return 200 "$connection $connection_requests [$http_cookie]"; }
)";

class HttpTest : public DeviceTest {
 protected:
  HttpTest()
      : web(kLocations + ("location = /origin { proxy_pass http://" + origin.host() + "; }")) {}

  // What a script that finds the server's addresses logs of each expression.
  void expect(const std::vector<Row>& rows) {
    std::string script = "const WEB = '" + web.url("") + "', TLS = '" + web.tlsUrl("") + "';";
    for (const Row& row : rows) script += "\nlog(" + row.expression + ");";
    app = run(script, {"http"});
    for (const Row& row : rows) EXPECT_EQ(app.logged(), row.logged) << row.expression;
  }
  [[nodiscard]] std::vector<std::string> curlErrors() const {
    std::vector<std::string> errors = app.warnings();
    std::erase_if(errors, [](const auto& text) { return !text.starts_with("curl error"); });
    return errors;
  }

  void TearDown() override {
    SystemTest::TearDown();
    if (HasFailure()) std::cerr << web.errors();
  }

  // What the web server passes on, at "/origin".
  RecordingServer origin;
  Nginx web;
};

TEST_F(HttpTest, isThereOnlyWithItsAccess) {
  expectLogged({{"Object.keys(http).join()", "get,post,get2,post2"}}, {"http"});
  expectLogged({{"typeof http", "undefined"}}, {"led", "facebook", "twitter", "soundcloud"});
}

// --- responses

TEST_F(HttpTest, contentIsTheBodyOfAnyStatus) {
  web.file("plain.txt", "plain text\n");
  web.file("page.html", "<p>chunked</p>\n");
  web.file("refusal.txt", "not for you");
  web.file("nothing.txt", "");
  web.file("zero.bin", std::string("a\0b", 3));
  expect({{"JSON.stringify(http.get(WEB + '/files/plain.txt'))", R"("plain text\n")"},
          {"JSON.stringify(http.get(WEB + '/files/page.html'))", R"("<p>chunked</p>\n")"},
          {"JSON.stringify(http.get(WEB + '/files/zero.bin'))", R"("a\u0000b")"},
          {"http.get(WEB + '/files/nothing.txt').length", "0"},
          {"http.get(WEB + '/empty').length", "0"},
          {"http.get(WEB + '/broken')", "out of order"},
          {"http.get(WEB + '/forbidden')", "not for you"},
          {"/404 Not Found/.test(http.get(WEB + '/files/missing'))", "true"},
          {"http.get(WEB + '/mirror', {'X-One': 'a: b', 'X-Two': 2})", "GET a: b|2||*/*"},
          {"http.get(WEB + '/mirror', [{'X-One': 1}, 7, {'User-Agent': 'me'}])", "GET 1||me|*/*"},
          {"http.post(WEB + '/mirror', {a: 1}, {Accept: 'x'})", "POST |||x"},
          {"http.post(WEB + '/mirror', {}, {}, true)", "GET |||*/*"}});
}

TEST_F(HttpTest, headerIsEveryLineOfTheResponse) {
  web.file("plain.txt", "plain text\n");
  web.file("page.html", "<p>chunked</p>\n");
  app =
      run("for (const path of ['/files/plain.txt', '/files/page.html', '/moved', '/empty',"
          " '/broken']) log(JSON.stringify(http.get2('" +
              web.url("") + "' + path)));",
          {"http"});
  EXPECT_THAT(
      app.logged(),
      MatchesRegex(R"(\{"header":"HTTP/1.1 200 OK\\r\\nServer: nginx.*)"
                   R"(Content-Length: 11\\r\\n.*\\r\\n\\r\\n","content":"plain text\\n"\})"));
  EXPECT_THAT(app.logged(),
              MatchesRegex(R"(\{"header":"HTTP/1.1 200 OK\\r\\n.*Transfer-Encoding: chunked\\r\\n)"
                           R"(.*\\r\\n\\r\\n","content":"<p>chunked</p>\\n"\})"));
  // Not followed.
  EXPECT_THAT(
      app.logged(),
      MatchesRegex(R"(\{"header":"HTTP/1.1 302 Moved Temporarily.*Location: )" +
                   web.url("/files/plain.txt") + R"(.*","content":"<html>.*302 Found.*"\})"));
  EXPECT_THAT(app.logged(),
              MatchesRegex(R"(\{"header":"HTTP/1.1 204 No Content.*","content":""\})"));
  EXPECT_THAT(
      app.logged(),
      MatchesRegex(
          R"(\{"header":"HTTP/1.1 500 Internal Server Error.*","content":"out of order"\})"));
}

// The server compresses for whoever asks for it. A script that does has the bytes as they come.
TEST_F(HttpTest, nothingIsCompressedUnlessTheScriptAsksForIt) {
  web.file("long.txt", std::string(1000, 'x'));
  expect({{"http.get(WEB + '/files/long.txt') === 'x'.repeat(1000)", "true"},
          {"(r = http.get2(WEB + '/files/long.txt', {'Accept-Encoding': 'gzip'})).content.length"
           " < 100",
           "true"},
          {"/Content-Encoding: gzip\\r\\n/.test(r.header)", "true"},
          {"r.content.charCodeAt(0)", "31"}});
}

TEST_F(HttpTest, aLargeResponseComesWhole) {
  std::string large;
  for (int i = 0; i < 400000; ++i) large += std::to_string(i % 10) + "large\n";
  web.file("large.txt", large);
  expect({{"(text = http.get(WEB + '/files/large.txt')).length", "2800000"},
          {"text === '0large\\n1large\\n2large\\n3large\\n4large\\n5large\\n6large\\n7large\\n"
           "8large\\n9large\\n'.repeat(40000)",
           "true"}});
}

// Nothing is kept from one request for the next one: no connection and no cookie.
TEST_F(HttpTest, everyRequestIsAConnectionOfItsOwn) {
  expect({{"(visits = [1, 2, 3].map(() => http.get(WEB + '/visit')))"
           ".map(visit => visit.split(' ').slice(1).join(' ')).join()",
           "1 [],1 [],1 []"},
          {"new Set(visits.map(visit => visit.split(' ')[0])).size", "3"},
          {"http.get2(WEB + '/visit').header.includes('Set-Cookie: seen=yes; path=/')", "true"},
          {"new Set([1, 2].map(() => http.get(TLS + '/visit').split(' ')[0])).size", "2"}});
}

// The application stands still until its answer is there, and only that application.
TEST_F(HttpTest, aRequestKeepsTimersAndMessagesWaiting) {
  origin.holdBack();
  connect(
      "morvik.button.addListener(function() { log('pressed'); return true; });"
      "setTimeout(1, function() { log('timer'); });"
      "log('asks');"
      "log(http.get('" +
          origin.url() + "') === '' ? 'has its answer' : 'failed');",
      {"http", "button"});
  EXPECT_EQ(app.logged(), "asks");
  ASSERT_NE(origin.takeRequest(), "");
  device.send(zephMsg("buttonCallback { type: SIMPLE }"));
  App other = run("setTimeout(20, function() { log('later'); });");
  EXPECT_EQ(other.logged(), "later");
  origin.letGo();
  EXPECT_EQ(app.logged(), "has its answer");
  std::vector<std::string> waited = {app.logged(), app.logged()};
  EXPECT_THAT(waited, testing::UnorderedElementsAre("timer", "pressed"));
}

// --- charsets

TEST_F(HttpTest, aBodyOrAHeaderTellsTheCharset) {
  const std::string filler(20, '.');
  const std::string xml = "<?xml encoding=";
  web.file("a.latin1", "caf\xe9" + filler);
  web.file("a.cp1252", "10 \x80" + filler);
  web.file("a.utf16", std::string("w\0i\0d\0e\0", 8));
  web.file("a.utf8", "caf\xc3\xa9");
  web.file("a.utf8copy", "caf\xc3\xa9");
  web.file("a.xml", xml + "\"ISO-8859-1\"?>caf\xe9" + filler);
  web.file("b.latin1", xml + "'utf-8'?>caf\xc3\xa9");
  expect({{"escape(http.get(WEB + '/files/a.latin1'))", "caf%E9" + filler},
          {"escape(http.get(WEB + '/files/a.cp1252'))", "10%20%u20AC" + filler},
          {"escape(http.get(WEB + '/files/a.utf16'))", "wide"},
          {"escape(http.get(WEB + '/files/a.utf8'))", "caf%E9"},
          {"escape(http.get(WEB + '/files/a.utf8copy'))", "caf%E9"},
          {"escape(http.get(WEB + '/files/a.xml').split('>')[1])", "caf%E9" + filler},
          // The body's word goes before the header's.
          {"escape(http.get(WEB + '/files/b.latin1').split('>')[1])", "caf%E9"}});
}

// Told on standard output only: the script gets the bytes, read as UTF-8.
TEST_F(HttpTest, whatCannotBeConvertedStaysAsItIs) {
  web.file("a.klingon", "plain");
  web.file("a.latin1", std::string(100, '\xe9'));
  web.file("talk.txt", "about encoding of texts");
  expect({{"http.get(WEB + '/files/a.klingon')", "plain"},
          {"http.get(WEB + '/files/a.latin1') === '\\ufffd'.repeat(100)", "true"},
          {"http.get(WEB + '/files/talk.txt')", "about encoding of texts"}});
  EXPECT_EQ(host().output().await(" OF to UTF-8.\n"),
            "Failed to iconv_open KLINGON to UTF-8.\n"
            "Fail to convert characters to new code set in remaining 44 out remaining 0.\n"
            "Failed to iconv_open OF to UTF-8.\n");
}

// --- failures

constexpr char kCut[] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\nX-Mine: 1\r\n\r\nonly this";
constexpr char kCutChunk[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n64\r\nonly this";

// The header lines that came are kept; the part of the body is not.
TEST_F(HttpTest, aBodyThatBreaksOffIsAnError) {
  const char* const breakOff =
      "(r = http.get2(WEB + '/origin')).header.split('\\r\\n')[0] + ' ' + r.content";
  origin.answerWith(kCut);
  expect({{breakOff, "HTTP/1.1 200 OK curl error"}});
  EXPECT_THAT(curlErrors(), ElementsAre("curl error code: 18"));
  origin.answerWith(kCutChunk);
  expect({{breakOff, "HTTP/1.1 200 OK curl error"}});
  EXPECT_THAT(curlErrors(), ElementsAre("curl error code: 18"));
}

TEST_F(HttpTest, whatFailsGivesATextAndACode) {
  const std::string dead = RecordingServer().url();
  const struct {
    std::string call;
    int code;
  } rows[] = {{"get('" + dead + "')", 7},
              {"post('" + dead + "', {a: 1})", 7},
              {"get(WEB + '/silent')", 52},
              {"post(WEB + '/silent', {a: 1})", 52},
              {"get('nonsense://x')", 1},
              {"get('')", 3},
              // TLS where there is none.
              {"get(WEB.replace('http', 'https'))", 35}};
  std::vector<Row> expressions;
  std::vector<std::string> warnings;
  for (const auto& row : rows) {
    expressions.push_back({"http." + row.call, "curl error"});
    warnings.push_back("curl error code: " + std::to_string(row.code));
  }
  expect(expressions);
  EXPECT_THAT(curlErrors(), ElementsAreArray(warnings));
}

// --- TLS

TEST_F(HttpTest, aCertificateThatNobodyKnowsIsTaken) {
  web.file("plain.txt", "secret text");
  expect({{"http.get(TLS + '/files/plain.txt')", "secret text"},
          {"http.get2(TLS + '/files/plain.txt').header.split('\\r\\n')[0]", "HTTP/1.1 200 OK"},
          {"http.post(TLS + '/bodies', {a: 'x y', b: 2})", "taken"}});
  EXPECT_THAT(web.bodies(), ElementsAre("a=x%20y&b=2"));
}

// Whether the certificate is for the host that was asked for is still looked at.
TEST_F(HttpTest, aCertificateForAnotherNameIsNot) {
  expect({{"JSON.stringify(http.get2('https://" + web.tlsHost() + "/'))",
           R"({"header":"","content":"curl error"})"}});
  EXPECT_THAT(curlErrors(), ElementsAre("curl error code: 60"));
}

// --- what the server gets

constexpr char kPicture[] = "picture \xff\xd8 with a \0 byte";
const std::string kPictureBytes(kPicture, sizeof kPicture - 1);

TEST_F(HttpTest, bodiesArriveAsTheyWereMeant) {
  apps.file("app1", "picture.jpg", kPictureBytes);
  apps.file("app1", "empty", "");
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"{a: 1, b: 'x&y=z', 'k y': '\\u00e9\\u20ac'}", "a=1&b=x%26y%3Dz&k%20y=%C3%A9%E2%82%AC"},
      {"['x', 'y']", "0=x&1=y"},
      {"{a: file.read('picture.jpg')}", kPictureBytes},
      {"{a: file.read('picture.jpg'), b: 1}", "a=%5Bobject%20Object%5D&b=1"},
      {"{a: 'x'.repeat(100000)}", "a=" + std::string(100000, 'x')}};
  std::vector<Row> expressions;
  std::vector<std::string> bodies;
  for (const auto& [params, body] : rows) {
    expressions.push_back({"http.post(WEB + '/bodies', " + params + ")", "taken"});
    bodies.push_back(body);
  }
  expect(expressions);
  EXPECT_EQ(web.bodies(), bodies);
}

std::string part(const std::string& boundary, const std::string& disposition,
                 const std::string& content) {
  return boundary + "\r\nContent-Disposition: form-data; " + disposition + "\r\n\r\n" + content +
         "\r\n";
}

TEST_F(HttpTest, aFormArrivesPartByPart) {
  std::string large;
  for (int i = 0; i < 300000; ++i) large += std::to_string(i) + '\0';
  apps.file("app1", "large.bin", large);
  apps.file("app1", "picture.jpg", kPictureBytes);
  expect({{"http.post(WEB + '/bodies', {title: 'caf\\u00e9 & co', photo: file.read('picture.jpg'),"
           " more: file.read('large.bin'), dropped: {}}, {'X-One': 1}, true)",
           "taken"},
          {"http.post(WEB + '/bodies', {a: file.read('missing')}, {}, true)", "curl error"}});
  const std::vector<std::string> bodies = web.bodies();
  ASSERT_EQ(bodies.size(), 1U);
  const std::string boundary = bodies[0].substr(0, bodies[0].find("\r\n"));
  const std::string type = "\r\nContent-Type: ";
  EXPECT_TRUE(bodies[0] ==
              part(boundary, "name=\"title\"", "caf\xc3\xa9 & co") +
                  part(boundary, "name=\"photo\"; filename=\"picture.jpg\"" + type + "image/jpeg",
                       kPictureBytes) +
                  part(boundary,
                       "name=\"more\"; filename=\"large.bin\"" + type + "application/octet-stream",
                       large) +
                  boundary + "--\r\n")
      << bodies[0].substr(0, 1000);
}

// What the events of the camera and the recorder hold stands for a file like any other.
TEST_F(HttpTest, whatTheDeviceHasTakenGoesUp) {
  const struct {
    const char* take;
    const devkit::MediaKind& kind;
  } rows[] = {{"webcam.photo('x', ", devkit::kPicture}, {"multimedia.record(", devkit::kRecording}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.kind.path);
    ASSERT_EQ(writeMedia(row.kind, {}), std::nullopt);
    const std::string bytes = contentOf(row.kind.path);
    interactive("morvik." + std::string(row.take) + "function(event) { log(http.post('" +
                    origin.url() + "', {a: event.data}) + http.post('" + origin.url() +
                    "', {a: event.data}, {}, true)); });",
                {"http", "webcam", "multimedia"});
    device.event(device.receive(), "TERMINATED");
    EXPECT_EQ(app.logged(), "");
    EXPECT_TRUE(origin.takeRequest().ends_with("\r\n\r\n" + bytes));
    EXPECT_THAT(origin.takeRequest(), testing::HasSubstr("\r\n\r\n" + bytes + "\r\n--"));
  }
}

// A server is asked first whether it takes a large body, and its consent is in the header lines.
TEST_F(HttpTest, headersHoldTheInterimResponse) {
  apps.file("app1", "large.bin", std::string(2000000, 'x'));
  expect(
      {{"http.post2(WEB + '/bodies', {a: file.read('large.bin')}, {}, true)"
        ".header.indexOf('HTTP/1.1 100 Continue\\r\\n\\r\\nHTTP/1.1 200 OK\\r\\n')",
        "0"}});
}

}  // namespace
}  // namespace morvik::test
