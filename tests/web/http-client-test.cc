// http: arguments, the exact bytes of requests, responses of every kind, failures, and the log.
#include "web/http-client.h"

#include <csignal>
#include <fstream>

#include "host/data-object.h"
#include "support/unit/log-texts.h"
#include "support/unit/web-test.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

class HttpClientTest : public WebTest {
 protected:
  // A request's line and headers, with the two that every request to this server has in place.
  [[nodiscard]] std::string head(const std::string& line, const std::string& more = "") const {
    return line + " HTTP/1.1\r\nHost: " + web.host() + "\r\nAccept: */*\r\n" + more + "\r\n";
  }
  [[nodiscard]] std::string posted(const std::string& body, const std::string& more = "") const {
    return head("POST /", more + "Content-Length: " + std::to_string(body.size()) +
                              "\r\nContent-Type: application/x-www-form-urlencoded\r\n") +
           body;
  }
  // Where nobody listens: the port of a server that is gone.
  static std::string deadUrl() { return RecordingServer().url(); }
};

TEST_F(HttpClientTest, hasItsFourFunctions) {
  EXPECT_EQ(run("Object.keys(http).sort().join()"), "get,get2,post,post2");
}

TEST_F(HttpClientTest, theBytesOfAGet) {
  const struct {
    const char* call;
    std::string request;
  } rows[] = {
      {"get(url)", head("GET /")},
      {"get2(url)", head("GET /")},
      {"get(url + 'a/b?c=d&e=%20#f')", head("GET /a/b?c=d&e=%20")},
      {"get(url + '\\u0141')", head("GET /A")},
      {"get(url, {})", head("GET /")},
      {"get(url, {A: 1, B: 'x'})", head("GET /", "A: 1\r\nB: x\r\n")},
      {"get(url, {'User-Agent': 'me'})",
       "GET / HTTP/1.1\r\nHost: " + web.host() + "\r\nAccept: */*\r\nUser-Agent: me\r\n\r\n"},
      {"get(url, [{A: 1}, 7, {B: 2}])", head("GET /", "A: 1\r\nB: 2\r\n")},
      {"get(url, {A: 'x: y'})", head("GET /", "A: x: y\r\n")},
      {"get(url, {A: 'x\\r\\nB: y'})", head("GET /", "A: x\r\nB: y\r\n")},
      {"get(url, 5)", head("GET /")},
      {"get(url, 'A: 1')", head("GET /")},
      {"get(url, null)", head("GET /")},
      {"get(url, {}, 7)", head("GET /")},
      {"get(url, {A: 1}, 7)", head("GET /", "A: 1\r\n")},
      {"get(url, undefined, {A: 1})", head("GET /")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    run(std::string("http.") + row.call);
    EXPECT_EQ(web.takeRequest(), row.request);
  }
}

TEST_F(HttpClientTest, theBytesOfAUrlencodedPost) {
  const struct {
    const char* call;
    std::string request;
  } rows[] = {
      {"post(url, {})", posted("")},
      {"post2(url, {a: 1})", posted("a=1")},
      {"post(url, {a: 1, b: 'x&y'})", posted("a=1&b=x%26y")},
      {"post(url, ['x', 'y'])", posted("0=x&1=y")},
      {"post(url, function() {})", posted("")},
      {"post(url, {a: {}})", posted("")},
      {"post(url, {a: [1, 2]})", posted("")},
      {"post(url, {a: picture})", posted("file bytes")},
      {"post(url, {a: picture, b: 1})", posted("a=%5Bobject%20Object%5D&b=1")},
      {"post(url, {a: missing})", posted("")},
      {"post(url, {a: 1}, {A: 2})", posted("a=1", "A: 2\r\n")},
      {"post(url, {a: 1}, 5)", posted("a=1")},
      {"post(url, {a: 1}, {}, 1)", posted("a=1")},
      {"post(url, {a: 1}, {A: 2}, 'true')", posted("a=1", "A: 2\r\n")},
      {"post(url, {a: 1}, {A: 2}, new Boolean(true))", posted("a=1", "A: 2\r\n")},
      {"post(url, {a: 1}, {A: 2}, false)", posted("a=1", "A: 2\r\n")},
      {"post(url, {a: 1}, undefined, undefined, true)", posted("a=1")},
      {"post(url, {a: 1}, {'Content-Type': 'text/plain'})",
       head("POST /", "Content-Type: text/plain\r\nContent-Length: 3\r\n") + "a=1"},
  };
  writePicture("file bytes");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    run(std::string("http.") + row.call);
    EXPECT_EQ(web.takeRequest(), row.request);
  }
}

TEST_F(HttpClientTest, aFilesBytesGoOutAsTheyAre) {
  for (const std::string& bytes : {std::string(), std::string("\0", 1),
                                   std::string("a\0b\xff\r\n", 6), std::string(200000, 'x')}) {
    SCOPED_TRACE(bytes.size());
    writePicture(bytes);
    run("http.post(url, {a: picture})");
    EXPECT_EQ(web.takeRequest(), posted(bytes));
  }
}

constexpr const char* kTextPart = "Content-Disposition: form-data; name=\"a\"\r\n";

TEST_F(HttpClientTest, theBytesOfAForm) {
  writePicture("file bytes");
  const std::string file =
      "Content-Disposition: form-data; name=\"a\"; filename=\"picture\"\r\n"
      "Content-Type: application/octet-stream\r\n";
  const struct {
    const char* call;
    std::vector<Part> parts;
  } rows[] = {
      {"post(url, {a: 1}, {}, true)", {{kTextPart, "1"}}},
      {"post2(url, {a: 'x & y'}, null, true)", {{kTextPart, "x & y"}}},
      {"post(url, {a: '\\u00e9'}, {}, true)", {{kTextPart, "\xc3\xa9"}}},
      {"post(url, {a: 'x\\0y'}, {}, true)", {{kTextPart, "x"}}},
      {"post(url, {'\\u00e9': 1}, {}, true)",
       {{"Content-Disposition: form-data; name=\"\xc3\xa9\"\r\n", "1"}}},
      {"post(url, {'\\u00e9': picture}, {}, true)",
       {{"Content-Disposition: form-data; name=\"\xc3\xa9\"; filename=\"picture\"\r\n"
         "Content-Type: application/octet-stream\r\n",
         "file bytes"}}},
      {"post(url, {a: ''}, {}, true)", {{kTextPart, ""}}},
      {"post(url, {a: picture}, {}, true)", {{file, "file bytes"}}},
      {"post(url, {x: {}, a: picture, y: [1], z: 2}, {}, true)",
       {{file, "file bytes"}, {"Content-Disposition: form-data; name=\"z\"\r\n", "2"}}},
      {"post(url, {a: 1}, {}, true, 7)", {{kTextPart, "1"}}},  // the fifth is dropped
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    run(std::string("http.") + row.call);
    const std::string request = web.takeRequest();
    EXPECT_THAT(request, StartsWith("POST / HTTP/1.1\r\nHost: " + web.host() +
                                    "\r\nAccept: */*\r\nContent-Length: "));
    EXPECT_EQ(partsOf(request), row.parts);
  }
}

// The bytes of a lone file are taken before the headers are looked at; a form's are taken when they
// go out.
TEST_F(HttpClientTest, aFormsFileIsReadDuringTheTransfer) {
  expose("change", [](const Args& args) {
    std::ofstream(*asciiText(args.GetIsolate(), args[0])) << "new bytes";
  });
  const std::string change = "{get A() { change('" + pictureFile() + "'); return 1; }}";
  writePicture("old bytes");
  run("http.post(url, {a: picture}, " + change + ")");
  EXPECT_EQ(takeBody(), "old bytes");
  writePicture("old bytes");
  run("http.post(url, {a: picture}, " + change + ", true)");
  EXPECT_EQ(partsOf(web.takeRequest()).at(0).content, "new bytes");
}

TEST_F(HttpClientTest, aFormsPathIsOneByteForEachUnit) {
  std::ofstream(pictureFile() + "\xe9") << "one byte";
  setGlobal("accented", newDataObject(context(), pictureFile() + "\xc3\xa9"));
  run("http.post(url, {a: accented}, {}, true)");
  EXPECT_EQ(partsOf(web.takeRequest()).at(0).content, "one byte");
}

TEST_F(HttpClientTest, aFormWithoutPartsIsAGet) {
  run("http.post(url, {}, {}, true)");
  EXPECT_EQ(web.takeRequest(), head("GET /"));
  run("http.post(url, {a: {}}, {A: 1}, true)");
  EXPECT_EQ(web.takeRequest(), head("GET /", "A: 1\r\n"));
}

TEST_F(HttpClientTest, refusesAndSendsNothing) {
  const char* const wrong[] = {"get()",
                               "get(5)",
                               "get(undefined)",
                               "get({})",
                               "get(new String(url))",
                               "get2()",
                               "get2(null, {})",
                               "post()",
                               "post(url)",
                               "post(5, {})",
                               "post(url, 5)",
                               "post(url, 'a')",
                               "post(url, null)",
                               "post2(url)",
                               "post2({}, {})",
                               "post2(url, undefined, {}, true)"};
  for (const char* call : wrong) {
    SCOPED_TRACE(call);
    log.clear();
    EXPECT_EQ(run(std::string("http.") + call), "throws: Signature error function");
    const bool isGet = std::string(call).starts_with("get");
    EXPECT_EQ(logLines(), isGet ? Lines{"DEBUG httpget..."} : Lines());
  }
  EXPECT_EQ(run("try { http.get(); } catch (e) { typeof e; }"), "string");
  EXPECT_EQ(web.waiting(), 0u);
}

TEST_F(HttpClientTest, exceptionsReachTheScriptAndNothingIsSent) {
  const struct {
    const char* call;
    const char* thrown;
  } rows[] = {
      {"get(url, {get A() { throw 'header'; }})", "throws: header"},
      {"get2(url, [{A: Symbol('s')}])",
       "throws: TypeError: Cannot convert a Symbol value to a string"},
      {"post(url, {get a() { throw 'param'; }}, {get A() { throw 'header'; }})", "throws: param"},
      {"post(url, {a: 1}, {get A() { throw 'header'; }})", "throws: header"},
      {"post2(url, {a: 1, get b() { throw 'param'; }}, {}, true)", "throws: param"},
      {"post(url, {a: {toString() { throw 'text'; }}, b: 1})", "throws: text"},
  };
  for (const auto& row : rows) EXPECT_EQ(run(std::string("http.") + row.call), row.thrown);
  EXPECT_EQ(web.waiting(), 0u);
}

TEST_F(HttpClientTest, givesTheResponse) {
  const std::string answer = response("the body", "X: y\r\n");
  web.answerWith(answer);
  for (const char* call : {"get(url)", "post(url, {})", "post(url, {a: 1}, {}, true)"}) {
    EXPECT_EQ(run(std::string("http.") + call), "the body");
  }
  for (const char* call : {"get2(url)", "post2(url, {})", "post2(url, {a: 1}, {}, true)"}) {
    EXPECT_EQ(run(std::string("JSON.stringify(http.") + call + ")"),
              R"({"header":"HTTP/1.1 200 OK\r\nX: y\r\nContent-Length: 8\r\n\r\n",)"
              R"("content":"the body"})");
  }
}

TEST_F(HttpClientTest, theResultIsAPlainObjectOfItsOwn) {
  EXPECT_EQ(run("Object.defineProperty(Object.prototype, 'content', {configurable: true,"
                "  set() { log('setter'); }, get() { return 'inherited'; }});"
                "var r = http.get2(url); Object.getPrototypeOf(r) === Object.prototype"),
            "true");
  EXPECT_EQ(run("r.content = 'changed'; r.header = 5; r.content + r.header + Object.keys(r)"),
            "changed5header,content");
  EXPECT_EQ(run("http.get(url)"), "");
  EXPECT_THAT(logged(), ElementsAre());
}

TEST_F(HttpClientTest, responsesOfEveryKind) {
  const struct {
    std::string answer;
    const char* content;  // of JSON.stringify
  } rows[] = {
      {response(""), R"("")"},
      {"HTTP/1.1 204 No Content\r\n\r\n", R"("")"},
      {"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone", R"("gone")"},
      {"HTTP/1.1 500 Internal Server Error\r\nContent-Length: 5\r\n\r\nwoops", R"("woops")"},
      {"HTTP/1.1 302 Found\r\nLocation: /other\r\nContent-Length: 5\r\n\r\nmoved", R"("moved")"},
      {"HTTP/1.1 200 OK\r\n\r\nuntil the end", R"("until the end")"},
      {"HTTP/1.0 200 OK\r\n\r\nold", R"("old")"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n",
       R"("abcde")"},
      {response(std::string("a\0b", 3)), R"("a\u0000b")"},
      {response("caf\xc3\xa9"), "\"caf\xc3\xa9\""},
      {response("caf\xe9"), "\"caf\xef\xbf\xbd\""},
      {response("caf\xe9 au lait", "Content-Type: text/plain; charset=iso-8859-1\r\n"),
       "\"caf\xc3\xa9 au lait\""},
      {response("<?xml encoding='iso-8859-1'?>\xe9", "Content-Type: x; charset=utf-8\r\n"),
       "\"<?xml encoding='iso-8859-1'?>\xc3\xa9\""},
      {response("zipped", "Content-Encoding: gzip\r\n"), R"("zipped")"},  // not unpacked
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.answer);
    web.answerWith(row.answer);
    EXPECT_EQ(run("JSON.stringify(http.get(url))"), row.content);
    web.takeRequest();
    EXPECT_EQ(web.waiting(), 0u);  // no redirect is followed
  }
}

TEST_F(HttpClientTest, headersHoldInterimResponsesToo) {
  web.answerWith("HTTP/1.1 103 Early Hints\r\nLink: <x>\r\n\r\n" +
                 response("body", "A: \xc3\xa9\r\n"));
  EXPECT_EQ(run("http.get2(url).header"),
            "HTTP/1.1 103 Early Hints\r\nLink: <x>\r\n\r\n"
            "HTTP/1.1 200 OK\r\nA: \xc3\xa9\r\nContent-Length: 4\r\n\r\n");
  // For a large body libcurl asks first.
  writePicture(std::string(1100000, 'x'));
  web.answerWith(response(""));
  EXPECT_THAT(run("http.post2(url, {a: picture}).header"),
              StartsWith("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n"));
  web.takeRequest();
  EXPECT_THAT(takeBody(), testing::SizeIs(1100000));
}

TEST_F(HttpClientTest, aLargeResponseArrivesWhole) {
  web.answerWith(response(std::string(2000000, 'x')));
  EXPECT_EQ(run("var text = http.get(url); text.length + text[1999999]"), "2000000x");
}

// The engine's own end: a line in the log that says so.
TEST_F(HttpClientTest, responsesThatTheEngineCannotHoldEndTheProcess) {
  const auto fetchTooMuch = [this] {
    printLog();
    web.answerWith(response(std::string(6000000, 'x')));
    run("var texts = []; while (texts.length < 20) texts.push(http.get(url));");
  };
  EXPECT_EXIT(fetchTooMuch(), testing::KilledBySignal(SIGTRAP), "script engine");
}

TEST_F(HttpClientTest, failuresAreAText) {
  setGlobal("dead", toScript(deadUrl()));
  const struct {
    const char* url;
    int code;
  } rows[] = {
      {"dead", 7},          {"'not a url'", 3}, {"''", 3},
      {"'nothing://x'", 1}, {"url + ' '", 3},   {"url + '\\0'", 3},  // read as a blank
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.url);
    log.clear();
    EXPECT_EQ(run(std::string("http.get(") + row.url + ")"), "curl error");
    EXPECT_EQ(logLines().at(2), "WARNING curl error code: " + std::to_string(row.code));
    EXPECT_THAT(logLines(), ElementsAre("DEBUG httpget...", StartsWith("DEBUG httpget to "),
                                        StartsWith("WARNING curl error code: "),
                                        "DEBUG curl error : curl error"));
  }
  EXPECT_EQ(run("JSON.stringify(http.post2(dead, {a: 1}))"),
            R"({"header":"","content":"curl error"})");
  EXPECT_EQ(web.waiting(), 0u);
}

TEST_F(HttpClientTest, aTransferThatBreaksOffLosesItsBodyAndKeepsItsHeaders) {
  web.answerWith(
      "HTTP/1.1 200 OK\r\nContent-Type: x; charset=iso-8859-1\r\n"
      "Content-Length: 100\r\n\r\nencoding=x and half");
  EXPECT_EQ(run("var r = http.get2(url); r.content"), "curl error");
  EXPECT_EQ(run("r.header"),
            "HTTP/1.1 200 OK\r\nContent-Type: x; charset=iso-8859-1\r\n"
            "Content-Length: 100\r\n\r\n");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "curl error code: 18"));
  // The charset step does not run.
  for (const std::string& text : log.texts())
    EXPECT_THAT(text, testing::Not(HasSubstr("encoding")));
}

// Whether libcurl finds out before it connects is its own business.
TEST_F(HttpClientTest, aFormsFileThatCannotBeReadFailsTheTransfer) {
  EXPECT_EQ(run("http.post(url, {a: missing}, {}, true)"), "curl error");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "curl error code: 26"));
}

TEST_F(HttpClientTest, theLogOfAGet) {
  web.answerWith(response("text", "X: charset=utf-8\r\n"));
  run("http.get(url, {A: 1})");
  EXPECT_THAT(logLines(), ElementsAre("DEBUG httpget...", "DEBUG httpget to " + web.url() + "...",
                                      "DEBUG header map", "DEBUG Headers : 1",
                                      "DEBUG HEADER A => 1", "DEBUG encoding not in data",
                                      "DEBUG encoding: UTF-8", "DEBUG already UTF-8"));
}

TEST_F(HttpClientTest, theLogOfAPostBodyFirstThenHeaders) {
  run("http.post(url, {a: 1}, {A: 2})");
  EXPECT_THAT(logLines(),
              ElementsAre("DEBUG isForm 0", "DEBUG genCurlPostSimple", "DEBUG Post params: 1",
                          "DEBUG a => 1", "DEBUG postSize : 4", "DEBUG data : a=1&",
                          "DEBUG postSize : 4", "WARNING http data the end : a=1 ",
                          "DEBUG httppost to " + web.url() + "...", "DEBUG header map",
                          "DEBUG Headers : 1", "DEBUG HEADER A => 2", "DEBUG datapost != NULL",
                          "DEBUG httpCall isForm = false : a=1", "DEBUG httpCall datapost.len : -1",
                          "DEBUG encoding not in data", "DEBUG encoding not in header"));
  log.clear();
  run("http.post(url, {a: 1}, undefined, true)");
  EXPECT_THAT(logLines(),
              ElementsAre("DEBUG isForm 1", "DEBUG Post params: 1", "DEBUG a => 1",
                          "DEBUG httppost to " + web.url() + "...", "DEBUG datapost != NULL",
                          "DEBUG encoding not in data", "DEBUG encoding not in header"));
}

// Called from inside the program: the count may be larger than what is handed over.
TEST_F(HttpClientTest, theCountIsTheScriptsOwn) {
  const v8::Context::Scope entered(context());
  const auto text = [](const char* value) { return v8::Local<v8::Value>(toScript(value)); };
  const auto params = v8::Object::New(isolate());
  setOwn(params, "a", text("1"));
  const v8::Local<v8::Value> form = v8::True(isolate());
  const std::vector<v8::Local<v8::Value>> args = {text(web.url().c_str()), params, form, form};
  const ExtraField extra{"token", "secret"};
  EXPECT_FALSE(httppost(isolate(), args, 7, &extra).IsEmpty());
  EXPECT_EQ(web.takeRequest(), posted("a=1&token=secret"));
  EXPECT_FALSE(httppost(isolate(), args, 4, &extra).IsEmpty());
  EXPECT_EQ(partsOf(web.takeRequest()),
            (std::vector<Part>{{kTextPart, "1"},
                               {"Content-Disposition: form-data; name=\"token\"\r\n", "secret"}}));
  EXPECT_FALSE(httpget(isolate(), std::span(args).first(1), 1).IsEmpty());
  EXPECT_EQ(web.takeRequest(), head("GET /"));
}

TEST_F(HttpClientTest, aGetterMayMakeARequestOfItsOwn) {
  run("http.post(url, {get a() { return http.get(url + 'inner', {B: 1}).length; }}, {A: 2})");
  EXPECT_EQ(web.takeRequest(), head("GET /inner", "B: 1\r\n"));
  EXPECT_EQ(web.takeRequest(), posted("a=0", "A: 2\r\n"));
}

}  // namespace
}  // namespace morvik::test
