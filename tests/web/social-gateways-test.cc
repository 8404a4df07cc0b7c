// social.facebook and social.soundcloud: which requests go out, with the token in them, and that
// nothing in a script's reach holds it.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "channel/pump.h"
#include "support/text-message.h"
#include "support/unit/frames.h"
#include "support/unit/web-test.h"
#include "support/web/tls-proxy.h"
#include "web/hidden-value.h"

namespace morvik::test {
namespace {

// With characters that are escaped in a body and not in a URL.
const std::string kToken = "SECRET+/=\xc3\xa9";
const std::string kEscapedToken = "SECRET%2B%2F%3D%C3%A9";
// The same, one byte for each character.
const std::string kTokenBytes = "SECRET+/=\xe9";

class SocialGatewaysTest : public WebTest {
 protected:
  SocialGatewaysTest() : proxy(web.host()) {
    setenv("https_proxy", proxy.url().c_str(), 1);
    run("var f = function() {}; var facebook = 'https://graph.facebook.com/';"
        "var soundcloud = 'https://api.soundcloud.com/'");
    answerInit("facebookToken: '" + kToken + "' soundcloudToken: '" + kToken + "'");
    web.answerWith(response("answer"));
  }

  void answerInit(const std::string& credentials) {
    run("social.init(function() {})");
    answer(sent().value(), zephMsg("social {" + credentials + "}"));
    log.clear();
  }

  // Through the socket, as the application hears the server.
  void receive(const zeph::ZephMsg& message) {
    const std::string bytes = frame(message.SerializeAsString());
    ASSERT_EQ(write(server, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_EQ(onSocketIdle(&instance), G_SOURCE_CONTINUE);
  }

  // The first line of the oldest request.
  std::string takeRequestLine() {
    const std::string request = web.takeRequest();
    return request.substr(0, request.find("\r\n"));
  }

  // Throws this text as a plain String, and nothing goes out.
  void expectRefused(const std::string& call, const std::string& text) {
    SCOPED_TRACE(call);
    expectThrows(call, text);
    EXPECT_EQ(web.waiting(), 0U);
  }

  TlsProxy proxy;
};

TEST_F(SocialGatewaysTest, getSendsTheTokenInTheUrlAsItIs) {
  const struct {
    const char* call;
    std::string line;
    const char* asked;
  } rows[] = {
      {"social.facebook.get(facebook + 'me')", "GET /me?access_token=" + kTokenBytes,
       "graph.facebook.com:443"},
      {"social.facebook.get(facebook)", "GET /?access_token=" + kTokenBytes,
       "graph.facebook.com:443"},
      {"social.facebook.get(facebook + 'me?fields=id')",
       "GET /me?fields=id&access_token=" + kTokenBytes, "graph.facebook.com:443"},
      {"social.facebook.get(facebook + '?')", "GET /?&access_token=" + kTokenBytes,
       "graph.facebook.com:443"},
      {"social.soundcloud.get(soundcloud + 'me')", "GET /me?oauth_token=" + kTokenBytes,
       "api.soundcloud.com:443"},
      {"social.soundcloud.get(soundcloud + 'me?a=b')", "GET /me?a=b&oauth_token=" + kTokenBytes,
       "api.soundcloud.com:443"},
      // Behind the fragment, which never leaves the host.
      {"social.facebook.get(facebook + 'me#part')", "GET /me", "graph.facebook.com:443"},
      {"social.facebook.get(facebook + 'me#a?b')", "GET /me", "graph.facebook.com:443"},
      // What follows the URL does not count.
      {"social.facebook.get(facebook + 'me', {'X-Mine': 1}, f)",
       "GET /me?access_token=" + kTokenBytes, "graph.facebook.com:443"},
      {"social.facebook.get(facebook + '\\u00e9\\u0141')", "GET /%e9A?access_token=" + kTokenBytes,
       "graph.facebook.com:443"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    ASSERT_EQ(run(row.call), "answer");
    const std::string request = web.takeRequest();
    EXPECT_EQ(request.substr(0, request.find("\r\n")), row.line + " HTTP/1.1");
    EXPECT_THAT(request, Not(HasSubstr("X-Mine")));
    EXPECT_EQ(proxy.asked().back(), row.asked);
  }
}

TEST_F(SocialGatewaysTest, getLogsTheWholeUrlUnderOneNameForBothServices) {
  const struct {
    const char* call;
    std::string url;
  } rows[] = {
      {"social.facebook.get(facebook + 'me#a?b')",
       "https://graph.facebook.com/me#a?b&access_token="},
      {"social.facebook.get(facebook + 'me#part')",
       "https://graph.facebook.com/me#part?access_token="},
      {"social.soundcloud.get(soundcloud)", "https://api.soundcloud.com/?oauth_token="},
  };
  for (const auto& row : rows) {
    log.clear();
    run(row.call);
    auto lines = logLines();
    ASSERT_GE(lines.size(), 5U);
    lines.resize(5);
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "MESSAGE secureHttpGet", "MESSAGE  regexp match 0",
                         "MESSAGE FacebookHttpGet URL " + row.url + kTokenBytes, "DEBUG httpget...",
                         "DEBUG httpget to " + row.url + kTokenBytes + "..."}));
  }
}

TEST_F(SocialGatewaysTest, postSendsTheTokenAsAFieldOfTheBody) {
  const std::string token = "access_token=" + kEscapedToken;
  const struct {
    const char* params;
    std::string body;
  } rows[] = {
      {"{}", token},
      {"{a: 1}", "a=1&" + token},
      {"{a: 'x y', b: '&'}", "a=x%20y&b=%26&" + token},
      {"{source: picture}", "source=%5Bobject%20Object%5D&" + token},
      {"{source: {}}", "source=%5Bobject%20Object%5D&" + token},
      {"{access_token: 'mine', b: 2}", token + "&b=2"},
      {"{a: 1, access_token: 'mine', b: 2}", "a=1&" + token + "&b=2"},
      {"{access_token: picture}", token},
      {"[1, 'b']", "0=1&1=b&" + token},
      {"[]", token},
      {"f", token},
      {"Object.create({inherited: 1})", token + "&inherited=1"},
      {"Object.create({access_token: 'mine'})", token},
      {"Object.assign(Object.create({access_token: 'mine', z: 2}), {a: 1})",
       "a=1&" + token + "&z=2"},
      {"Object.defineProperty({a: 1}, 'access_token', {value: 'mine'})", "a=1&" + token},
      {"Object.freeze({access_token: 'mine', a: 1})", token + "&a=1"},
      {"Object.freeze({a: 1})", "a=1&" + token},
      {"{oauth_token: 'mine'}", "oauth_token=mine&" + token},
      {"{access_token: {toString() { throw 'not asked for its text'; }}}", token},
      {"{get access_token() { throw 'not asked for its value'; }, a: 1}", token + "&a=1"},
      {"{account: social.facebook}", "account=%5Bobject%20Object%5D&" + token},
      {"new Proxy({a: 1}, {})", "a=1&" + token},
  };
  writePicture("bytes");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.params);
    ASSERT_EQ(run(std::string("social.facebook.post(facebook + 'me', ") + row.params + ")"),
              "answer");
    const std::string request = web.takeRequest();
    EXPECT_EQ(request.substr(0, request.find("\r\n")), "POST /me HTTP/1.1");
    EXPECT_EQ(bodyOf(request), row.body);
  }
  EXPECT_EQ(run("social.soundcloud.post(soundcloud, {a: 1})"), "answer");
  EXPECT_EQ(takeBody(), "a=1&oauth_token=" + kEscapedToken);
  EXPECT_EQ(proxy.asked().back(), "api.soundcloud.com:443");
}

TEST_F(SocialGatewaysTest, postKeepsFourArgumentsAndTheCount) {
  const std::string token = "access_token=" + kEscapedToken;
  const struct {
    const char* arguments;
    bool header;
    bool form;
  } rows[] = {
      {"{a: 1}", false, false},
      {"{a: 1}, {'X-Mine': 'yes'}", true, false},
      {"{a: 1}, 5", false, false},
      {"{a: 1}, {'X-Mine': 'yes'}, false", true, false},
      {"{a: 1}, {'X-Mine': 'yes'}, 1", true, false},
      {"{a: 1}, {'X-Mine': 'yes'}, true", true, true},
      {"{a: 1}, undefined, true", false, true},
      {"{a: 1}, {'X-Mine': 'yes'}, true, true", true, false},
      {"{a: 1}, {'X-Mine': 'yes'}, true, 5, 6, 7, 8, 9", true, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    ASSERT_EQ(run(std::string("social.facebook.post(facebook, ") + row.arguments + ")"), "answer");
    const std::string request = web.takeRequest();
    EXPECT_EQ(request.find("\r\nX-Mine: yes\r\n") != std::string::npos, row.header);
    EXPECT_EQ(request.find("multipart/form-data") != std::string::npos, row.form);
    if (!row.form) {
      EXPECT_EQ(bodyOf(request), "a=1&" + token);
    }
  }
}

TEST_F(SocialGatewaysTest, aFormHoldsTheTokenAsAPartAndFilesGoUp) {
  writePicture("bytes");
  ASSERT_EQ(run("social.facebook.post(facebook, {source: picture, a: 1}, {}, true)"), "answer");
  const auto parts = partsOf(web.takeRequest());
  ASSERT_EQ(parts.size(), 3U);
  EXPECT_THAT(parts[0].head, HasSubstr("name=\"source\""));
  EXPECT_EQ(parts[0].content, "bytes");
  EXPECT_THAT(parts[1].head, HasSubstr("name=\"a\""));
  EXPECT_THAT(parts[2].head, HasSubstr("name=\"access_token\""));
  EXPECT_EQ(parts[2].content, kToken);
  run("social.facebook.post(facebook, {access_token: picture}, {}, true)");
  const auto alone = partsOf(web.takeRequest());
  ASSERT_EQ(alone.size(), 1U);
  EXPECT_EQ(alone[0].content, kToken);
}

TEST_F(SocialGatewaysTest, theScriptsOwnObjectStaysAsItWas) {
  EXPECT_EQ(run("var params = {access_token: 'mine', a: 1};"
                "social.facebook.post(facebook, params); JSON.stringify(params)"),
            R"({"access_token":"mine","a":1})");
  EXPECT_EQ(run("params = {a: 1}; social.facebook.post(facebook, params);"
                "Reflect.ownKeys(params).join()"),
            "a");
}

TEST_F(SocialGatewaysTest, postLogsItsName) {
  run("social.soundcloud.post(soundcloud, {})");
  auto lines = logLines();
  lines.resize(2);
  EXPECT_THAT(lines, ElementsAre("MESSAGE secureHttpPost", "MESSAGE  regexp match 0"));
}

TEST_F(SocialGatewaysTest, refusesOtherArguments) {
  for (const char* service : {"facebook", "soundcloud"}) {
    const std::string object = std::string("social.") + service;
    for (const char* arguments :
         {"()", "(5)", "({})", "(null)", "(undefined)", "(new String('x'))", "(f)"}) {
      expectRefused(object + ".get" + arguments, "Signature error function");
      EXPECT_THAT(logLines(), ElementsAre("MESSAGE secureHttpGet"));
    }
    for (const char* arguments :
         {"()", "('x')", "('x', 5)", "('x', 'y')", "('x', null)", "('x', undefined)", "(5, {})",
          "({}, {})", "(null, {}, {}, true)"}) {
      expectRefused(object + ".post" + arguments, "Signature error function");
      EXPECT_THAT(logLines(), ElementsAre("MESSAGE secureHttpPost"));
    }
  }
}

TEST_F(SocialGatewaysTest, otherUrlsAreRefusedAndNothingGoesOut) {
  const std::string noMatch = "MESSAGE  regexp match 1";
  for (const char* url : {"'http://graph.facebook.com/'", "'https://facebook.com/'", "''", "'x'",
                          "url", "soundcloud", "'https://a.b.facebook.com/'"}) {
    const std::string argument = url;
    expectRefused("social.facebook.get(" + argument + ")", "unauthorised url");
    EXPECT_THAT(logLines(), ElementsAre("MESSAGE secureHttpGet", noMatch));
    expectRefused("social.facebook.post(" + argument + ", {get a() { log('read'); }})",
                  "unauthorised url");
    EXPECT_THAT(logLines(), ElementsAre("MESSAGE secureHttpPost", noMatch));
  }
  expectRefused("social.soundcloud.get(facebook)", "unauthorised url");
  expectRefused("social.soundcloud.post(facebook, {})", "unauthorised url");
  EXPECT_THAT(proxy.asked(), IsEmpty());
}

TEST_F(SocialGatewaysTest, functionsWorkWithoutTheirObject) {
  EXPECT_EQ(run("var {get, post} = social.facebook; get(facebook)"), "answer");
  EXPECT_EQ(takeRequestLine(), "GET /?access_token=" + kTokenBytes + " HTTP/1.1");
  EXPECT_EQ(run("post.call(null, facebook, {})"), "answer");
  EXPECT_EQ(takeBody(), "access_token=" + kEscapedToken);
  EXPECT_EQ(run("social.soundcloud.get.call(social.facebook, soundcloud)"), "answer");
  EXPECT_EQ(takeRequestLine(), "GET /?oauth_token=" + kTokenBytes + " HTTP/1.1");
}

TEST_F(SocialGatewaysTest, needsNoGrantForHttp) {
  run("delete globalThis.http");
  EXPECT_EQ(run("social.facebook.get(facebook)"), "answer");
}

TEST_F(SocialGatewaysTest, aFailedTransferIsAText) {
  proxy.certifyAs("elsewhere.example");
  EXPECT_EQ(run("social.facebook.get(facebook)"), "curl error") << "the name is not checked";
  EXPECT_EQ(run("social.facebook.post(facebook, {})"), "curl error");
  setenv("https_proxy", "http://127.0.0.1:1", 1);
  EXPECT_EQ(run("social.facebook.get(facebook)"), "curl error");
  EXPECT_EQ(web.waiting(), 0U);
}

TEST_F(SocialGatewaysTest, aNewTokenCountsAtOnce) {
  run("var get = social.facebook.get");
  answerInit("facebookToken: 'new'");
  run("get(facebook)");
  EXPECT_EQ(takeRequestLine(), "GET /?access_token=new HTTP/1.1");
  answerInit("facebookToken: ''");
  run("get(facebook)");
  EXPECT_EQ(takeRequestLine(), "GET /?access_token= HTTP/1.1");
}

// The token is the object's, wherever that stands. A property of the script's own is none, and
// neither is one that an object inherits.
TEST_F(SocialGatewaysTest, whereAScriptHasPutAnotherObjectTheTokenIsUndefined) {
  run("var original = {...social}; var {get, post} = social.facebook");
  for (const char* replacement : {
           "social.facebook = {}",
           "social.facebook = {token: 'mine'}",
           "social.facebook = 5",
           "social.facebook = 'text'",
           "social.facebook = Object.create(original.facebook)",
           "social.facebook = new Proxy(original.facebook, {})",
           "social.facebook = {...original.facebook}",
           "social = {facebook: {}}",
       }) {
    SCOPED_TRACE(replacement);
    run("social = {...original}");
    run(std::string(replacement) + "; 0");
    EXPECT_EQ(run("get(facebook)"), "answer");
    EXPECT_EQ(takeRequestLine(), "GET /?access_token=undefined HTTP/1.1");
    EXPECT_EQ(run("post(facebook, {a: 1})"), "answer");
    EXPECT_EQ(takeBody(), "a=1&access_token=undefined");
  }
  run("social = {facebook: original.facebook}; get(facebook)");
  EXPECT_EQ(takeRequestLine(), "GET /?access_token=" + kTokenBytes + " HTTP/1.1");
}

TEST_F(SocialGatewaysTest, whereNoObjectStandsTheLookUpThrows) {
  const struct {
    const char* replacement;
    const char* result;
  } rows[] = {
      {"social.facebook = null", "TypeError: Cannot convert undefined or null to object"},
      {"social = {}", "TypeError: Cannot convert undefined or null to object"},
      {"social = null", "TypeError: Cannot convert undefined or null to object"},
      {"social = 5", "TypeError: Cannot convert undefined or null to object"},
      {"delete globalThis.social", "TypeError: Cannot convert undefined or null to object"},
      {"social = {get facebook() { throw 'mine'; }}", "mine"},
      {"social = new Proxy({}, {get() { throw 'mine'; }})", "mine"},
  };
  run("var original = {...social}; var {get, post} = social.facebook");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.replacement);
    run("social = {...original}");
    run(std::string(row.replacement) + "; 0");
    EXPECT_EQ(run("get(facebook)"), std::string("throws: ") + row.result);
    EXPECT_EQ(run("post(facebook, {a: 1})"), std::string("throws: ") + row.result);
    // Before anything else, whatever the arguments are.
    log.clear();
    EXPECT_EQ(run("get(5)"), std::string("throws: ") + row.result);
    EXPECT_EQ(run("post()"), std::string("throws: ") + row.result);
    EXPECT_THAT(logLines(), IsEmpty());
    EXPECT_EQ(web.waiting(), 0U);
  }
}

// The one way in which a script sends a token to a place of its choice, on purpose.
TEST_F(SocialGatewaysTest, aFormTakesTheTokenOfAGateway) {
  run("http.post(url, {a: social.facebook, b: social.soundcloud, c: 1}, {}, true)");
  const std::string disposition = "Content-Disposition: form-data; name=";
  EXPECT_EQ(partsOf(web.takeRequest()), (std::vector<Part>{{disposition + "\"a\"\r\n", kTokenBytes},
                                                           {disposition + "\"b\"\r\n", kTokenBytes},
                                                           {disposition + "\"c\"\r\n", "1"}}));
  run("http.post(url, {a: social.facebook})");
  EXPECT_EQ(takeBody(), "") << "only in a form";
}

TEST_F(SocialGatewaysTest, whatTheScriptsObjectsThrowReachesItAndNothingGoesOut) {
  for (const char* arguments : {
           "{get a() { throw 'mine'; }}",
           "{a: {toString() { throw 'mine'; }}}",
           "new Proxy({}, {ownKeys() { throw 'mine'; }})",
           "{}, {a: {toString() { throw 'mine'; }}}",
           "{get a() { throw 'mine'; }}, {}, true",
       }) {
    SCOPED_TRACE(arguments);
    ASSERT_EQ(run(std::string("social.facebook.post(facebook, ") + arguments + ")"),
              "throws: mine");
    EXPECT_EQ(web.waiting(), 0U);
  }
}

// Whatever code of the script's a post runs: it runs without an object that holds the token.
TEST_F(SocialGatewaysTest, noCodeOfTheScriptsMeetsTheTokenDuringAPost) {
  const char* const kWitness = R"(
    var seen = [];
    function witness(...all) {
      for (const value of all) {
        if (typeof value === 'string') seen.push(value);
        if (typeof value !== 'object' || value === null) continue;
        for (let o = value; o; o = Object.getPrototypeOf(o))
          for (const key of Reflect.ownKeys(o)) {
            const own = Reflect.getOwnPropertyDescriptor(o, key);
            seen.push(String(key) + '=' + (typeof own.value === 'string' ? own.value : typeof own.value));
          }
      }
    }
    for (const name of ['access_token', 'content', 'header', 'token'])
      Object.defineProperty(Object.prototype, name, {
        set(value) { witness(this, value, 'setter of ' + name); },
        get() { witness(this); return undefined; }, configurable: true});
    for (const name of ['toString', 'replace', 'concat', 'valueOf']) {
      const before = String.prototype[name];
      String.prototype[name] = function(...all) { witness(before.call(this), ...all);
                                                  return before.apply(this, all); };
    }
    var watched = target => new Proxy(target, new Proxy({}, {get(_, what) { return (...all) => {
      const result = Reflect[what](...all);
      witness(...all.slice(1), result);
      return result; }; }}));
  )";
  EXPECT_EQ(run(std::string(kWitness) + "; 'ready'"), "ready");
  for (const char* params : {
           "{get a() { witness(this); return 1; }}",
           "{set access_token(v) { witness(this, v); }, a: 1}",
           "{get access_token() { witness(this); return 'mine'; }, a: 1}",
           "{a: {toString() { witness(this); return 'x'; }}}",
           R"(Object.create({get a() { witness(this); return 1; },
                             set access_token(v) { witness(v); }}))",
           "watched({a: 1})",
           "watched({access_token: 'mine'})",
           "watched([1, 2])",
           "Object.create(watched({a: 1}))",
           "new (class { #own = 1; get a() { witness(this); return this.#own; } })()",
           "{a: 1, toJSON() { witness(this); }}",
       }) {
    for (const char* form : {"false", "true"}) {
      SCOPED_TRACE(std::string(params) + " as a form: " + form);
      run("seen = []");
      ASSERT_EQ(run(std::string("social.facebook.post(facebook, ") + params + ", watched({}), " +
                    form + ")"),
                "answer");
      EXPECT_THAT(web.takeRequest(), HasSubstr("SECRET")) << "it did go out";
      EXPECT_THAT(run("seen.join('\\n')"), Not(HasSubstr("SECRET")));
    }
  }
  EXPECT_THAT(run("seen = []; watched({a: 1}).a; seen.join()"), HasSubstr("a"))
      << "the witness sees what there is to see";
}

// Walks everything that can be reached from the global object, and gives all texts on the way.
constexpr const char* kWalk = R"((function() {
  const texts = [], done = new Set();
  const queue = [globalThis];
  const take = value => {
    if (typeof value === 'string' || typeof value === 'symbol') texts.push(String(value));
    if ((typeof value === 'object' && value !== null) || typeof value === 'function') queue.push(value);
  };
  while (queue.length > 0) {
    const object = queue.pop();
    if (done.has(object)) continue;
    done.add(object);
    take(Object.getPrototypeOf(object));
    if (typeof object === 'function') texts.push(Function.prototype.toString.call(object));
    for (const key of Reflect.ownKeys(object)) {
      take(key);
      const own = Reflect.getOwnPropertyDescriptor(object, key);
      take(own.value); take(own.get); take(own.set);
    }
    try { texts.push(JSON.stringify(object)); } catch (e) { texts.push(String(e)); }
    for (const copy of [() => ({...object}), () => Object.assign({}, object)])
      for (const value of Object.values(copy())) take(value);
  }
  return texts.join('\n');
})())";

TEST_F(SocialGatewaysTest, noObjectThatAScriptCanReachHoldsASecret) {
  answerInit(
      "facebookToken: 'SECRET1' soundcloudToken: 'SECRET2' twitterConsumerKey: 'public1'"
      "twitterConsumerSecret: 'SECRET3' twitterToken: 'public2' twitterTokenSecret: 'SECRET4'");
  run("var one = social.facebook.get(facebook); var two = social.facebook.post(facebook, {a: 1});"
      "var three = social.twitter.sign('x'); var four = http.post2(url, {a: social.facebook}, {}, "
      "true)");
  ASSERT_EQ(run("[one, two, three.length, four.content].join()"), "answer,answer,28,answer");
  const std::string all = run(kWalk);
  EXPECT_THAT(all, HasSubstr("public1"));
  EXPECT_THAT(all, HasSubstr("public2"));
  EXPECT_THAT(all, HasSubstr("oauth_consumer_key"));
  EXPECT_THAT(all, Not(HasSubstr("SECRET")));
}

TEST_F(SocialGatewaysTest, noExceptionHoldsASecret) {
  run("social.twitter = {}");
  answerInit(
      "twitterConsumerKey: 'public1' twitterConsumerSecret: 'SECRET' twitterToken: 'public2'"
      "twitterTokenSecret: 'SECRET'");
  const std::string thrown = run(R"((function() {
    const texts = [];
    const calls = [];
    const odd = [undefined, null, 5, '', 'x', {}, [], facebook, 'https://x.facebook.com/\0 \n',
                 Symbol(), 1n, new Proxy({}, {get() { throw new Error('trap'); }}),
                 {toString() { throw new TypeError('text'); }}];
    for (const service of ['facebook', 'soundcloud', 'twitter'])
      for (const name of Object.keys(social[service])) {
        const call = social[service][name];
        if (typeof call !== 'function') continue;
        for (const first of odd) {
          calls.push(() => call(first), () => new call(first));
          for (const second of odd)
            if (first !== facebook || typeof second !== 'object')
              calls.push(() => call(first, second), () => call(first, second, first, true));
        }
      }
    const keep = e => { texts.push(String(e)); if (e instanceof Error) texts.push(e.stack, e.message); };
    for (const call of calls) try { call(); } catch (e) { keep(e); }
    return texts.join('\n');
  })())");
  EXPECT_THAT(thrown, HasSubstr("Signature error function"));
  EXPECT_THAT(thrown, HasSubstr("unauthorised url"));
  EXPECT_THAT(thrown, HasSubstr("Wrong arguments"));
  EXPECT_THAT(thrown, Not(HasSubstr("SECRET")));
}

// Lines that hold a token on purpose, each at its level.
bool mayHoldTheToken(const LogLine& line) {
  constexpr struct {
    int level;
    const char* start;
  } kAllowed[] = {
      {G_LOG_LEVEL_MESSAGE, "FacebookHttpGet URL "},
      {G_LOG_LEVEL_DEBUG, "httpget to "},
      {G_LOG_LEVEL_DEBUG, "access_token => "},
      {G_LOG_LEVEL_DEBUG, "oauth_token => "},
      {G_LOG_LEVEL_DEBUG, "data : "},
      {G_LOG_LEVEL_WARNING, "http data the end : "},
      {G_LOG_LEVEL_DEBUG, "httpCall isForm = false : "},
      {G_LOG_LEVEL_DEBUG, "TOKEN "},
      {G_LOG_LEVEL_WARNING, "urlEncode : Encoded URL: "},
  };
  return std::any_of(std::begin(kAllowed), std::end(kAllowed), [&](const auto& allowed) {
    return line.level == allowed.level && line.text.starts_with(allowed.start);
  });
}

TEST_F(SocialGatewaysTest, noOtherLineOfTheLogHoldsASecret) {
  run("social.init(function() {})");
  zeph::ZephMsg credentials = zephMsg(
      "id: 'answer' social { facebookToken: 'SECRET' soundcloudToken: 'SECRET' "
      "twitterConsumerKey: 'a' twitterConsumerSecret: 'SECRET' twitterToken: 'b' "
      "twitterTokenSecret: 'SECRET' }");
  credentials.set_correlationid(sent().value().id());
  receive(credentials);
  EXPECT_EQ(run("typeof social.twitter.sign"), "function");
  for (const char* call : {
           "social.facebook.get(facebook)",
           "social.soundcloud.get(soundcloud + '?a')",
           "social.facebook.post(facebook, {a: 1, b: 2}, {'X-Mine': 1})",
           "social.soundcloud.post(soundcloud, {oauth_token: 'mine'})",
           "social.facebook.post(facebook, {a: 1, source: picture}, {}, true)",
           "social.facebook.get('https://elsewhere.example/')",
           "social.twitter.sign('x')",
           "social.twitter.sign()",
           "http.post(url, {a: social.facebook}, {}, true)",
           "http.post(url, {a: social.facebook})",
           "log(social.facebook)",
           "log(JSON.stringify(social))",
       }) {
    run(call);
  }
  int allowed = 0;
  for (const LogLine& line : log.lines()) {
    if (line.text.find("SECRET") == std::string::npos) continue;
    EXPECT_TRUE(mayHoldTheToken(line)) << line.text;
    ++allowed;
  }
  EXPECT_GT(allowed, 8) << "the scan sees the lines that it allows";
}

}  // namespace
}  // namespace morvik::test
