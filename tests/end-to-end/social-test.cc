// social with the real names of its services: the requests go through a proxy on the loopback
// interface that stands in for them, as libcurl's own variable tells it. What they get, byte for
// byte, and where a token shows.
#include "support/system/feature-test.h"
#include "support/web/recording-server.h"
#include "support/web/tls-proxy.h"

namespace morvik::test {
namespace {

// With a character that is escaped in a body and not in a URL.
constexpr char kFacebook[] = "FACEBOOK+TOKEN";
constexpr char kSoundcloud[] = "SOUNDCLOUD+TOKEN";
constexpr char kConsumerSecret[] = "CONSUMER&SECRET";
constexpr char kTokenSecret[] = "TOKEN+SECRET";

zeph::Social credentials() {
  zeph::Social social;
  social.set_twitterconsumerkey("consumer key");
  social.set_twitterconsumersecret(kConsumerSecret);
  social.set_twittertoken("twitter token");
  social.set_twittertokensecret(kTokenSecret);
  social.set_facebooktoken(kFacebook);
  social.set_soundcloudtoken(kSoundcloud);
  return social;
}

class SocialTest : public FeatureTest {
 protected:
  SocialTest() : FeatureTest(""), proxy(site.host()) {
    startHost({.environment = {"https_proxy=" + proxy.url()}});
    site.answerWith(response("answer"));
  }

  // Runs the steps when the credentials have come, in an application that may use all of them.
  void expectSteps(const std::vector<Step>& steps, const zeph::Social& answer = credentials()) {
    connect(withGlobals("social.init(function() { " + scriptOf(steps) + " });"),
            {"twitter", "facebook", "soundcloud"});
    const zeph::ZephMsg query = device.receive();
    EXPECT_TRUE(query.has_socialquery());
    zeph::ZephMsg reply = replyTo(query);
    *reply.mutable_social() = answer;
    device.send(reply);
    const std::vector<Lines> done = stepsTillEnd();
    ASSERT_EQ(done.size(), steps.size());
    for (std::size_t i = 0; i < steps.size(); ++i)
      EXPECT_EQ(done[i].back(), "MESSAGE JSLOG: " + steps[i].result) << steps[i].call;
  }

  [[nodiscard]] static std::string getFrom(const std::string& host, const std::string& path) {
    return "GET " + path + " HTTP/1.1\r\nHost: " + host + "\r\nAccept: */*\r\n\r\n";
  }
  [[nodiscard]] static std::string postTo(const std::string& host, const std::string& path,
                                          const std::string& headers, const std::string& body) {
    return "POST " + path + " HTTP/1.1\r\nHost: " + host + "\r\nAccept: */*\r\n" + headers +
           "Content-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n" + body;
  }

  // The log's lines with this in them.
  [[nodiscard]] Lines linesWith(const std::string& secret) const {
    Lines lines;
    for (const std::string& text : app.texts())
      if (text.find(secret) != std::string::npos) lines.push_back(text);
    return lines;
  }

  RecordingServer site;
  TlsProxy proxy;
};

TEST_F(SocialTest, theServicesGetTheToken) {
  const std::string graph = "graph.facebook.com";
  const std::string sound = "api.soundcloud.com";
  expectSteps({{"social.facebook.get('https://graph.facebook.com/me?fields=id')", "answer"},
               {"social.facebook.post('https://graph.facebook.com/me', {a: 'x y'}, {'X-One': 1})",
                "answer"},
               {"social.soundcloud.get('https://api.soundcloud.com/me')", "answer"},
               {"social.soundcloud.post('https://api.soundcloud.com/me', {a: 1, oauth_token: 2})",
                "answer"}});
  EXPECT_EQ(site.takeRequest(), getFrom(graph, "/me?fields=id&access_token=FACEBOOK+TOKEN"));
  EXPECT_EQ(site.takeRequest(),
            postTo(graph, "/me", "X-One: 1\r\n", "a=x%20y&access_token=FACEBOOK%2BTOKEN"));
  EXPECT_EQ(site.takeRequest(), getFrom(sound, "/me?oauth_token=SOUNDCLOUD+TOKEN"));
  EXPECT_EQ(site.takeRequest(), postTo(sound, "/me", "", "a=1&oauth_token=SOUNDCLOUD%2BTOKEN"));
  EXPECT_THAT(proxy.asked(),
              ElementsAre(graph + ":443", graph + ":443", sound + ":443", sound + ":443"));
}

TEST_F(SocialTest, nobodyElseDoes) {
  const std::string refused = "throws string unauthorised url";
  expectSteps(
      {{"social.facebook.get('http://graph.facebook.com/me')", refused},
       {"social.facebook.get('https://facebook.com/me')", refused},
       {"social.facebook.get('https://graph.facebook.com')", refused},
       {"social.facebook.get('https://facebook.example.org/https://a.facebook.com/')", refused},
       {"social.facebook.post('https://api.soundcloud.com/me', {})", refused},
       {"social.soundcloud.get('https://graph.facebook.com/me')", refused},
       {"social.soundcloud.post('https://a.b.soundcloud.com/me', {})", refused},
       {"social.facebook.get()", "throws string Signature error function"}});
  EXPECT_EQ(site.waiting(), 0U);
  EXPECT_THAT(proxy.asked(), IsEmpty());
  for (const char* token : {"FACEBOOK", "SOUNDCLOUD"}) EXPECT_THAT(linesWith(token), IsEmpty());
}

TEST_F(SocialTest, aServiceThatCannotShowItsNameIsNotTold) {
  proxy.certifyAs("elsewhere.example.org");
  expectSteps({{"social.facebook.get('https://graph.facebook.com/me')", "curl error"},
               {"social.soundcloud.post('https://api.soundcloud.com/me', {})", "curl error"}});
  EXPECT_EQ(site.waiting(), 0U);
  EXPECT_THAT(app.warnings(), testing::Contains("curl error code: 60").Times(2));
}

// The user of an application's log sees a token where it goes out, and nowhere else.
TEST_F(SocialTest, aTokenShowsInTheseLinesOnly) {
  const std::string page = "https://graph.facebook.com/me";
  expectSteps({{"social.facebook.get('" + page + "')", "answer"},
               {"social.facebook.post('" + page + "', {a: 1})", "answer"},
               {"social.facebook.post('" + page + "', {a: 1}, {}, true)", "answer"},
               {"social.twitter.sign('text')", "rgONbxNLPhlAtd8KPxmBEKxBYNw="}});
  const std::string inUrl = page + "?access_token=FACEBOOK+TOKEN";
  const std::string inBody = "a=1&access_token=FACEBOOK%2BTOKEN";
  EXPECT_THAT(linesWith("FACEBOOK"),
              ElementsAre("FacebookHttpGet URL " + inUrl, "httpget to " + inUrl + "...",
                          "access_token => FACEBOOK+TOKEN", "data : " + inBody + "&",
                          "http data the end : " + inBody + " ",
                          "httpCall isForm = false : " + inBody, "access_token => FACEBOOK+TOKEN"));
  EXPECT_THAT(linesWith("SOUNDCLOUD"), IsEmpty());
  EXPECT_THAT(linesWith("SECRET"), ElementsAre("urlEncode : Encoded URL: CONSUMER%26SECRET\n",
                                               "urlEncode : Encoded URL: TOKEN%2BSECRET\n"));
}

TEST_F(SocialTest, aScriptSeesNoToken) {
  expectSteps({{"JSON.stringify(social)",
                R"({"twitter":{"oauth_consumer_key":"consumer key","oauth_token":"twitter token"},)"
                R"("facebook":{},"soundcloud":{}})"},
               {"Reflect.ownKeys(social.facebook).join()", "get,post"},
               {"Reflect.ownKeys(social.twitter).join()", "sign,oauth_consumer_key,oauth_token"},
               {"Object.assign({}, social.facebook).token", "undefined"},
               {"social.facebook.token + social.twitter.tokensecret", "NaN"}});
  for (const char* token : {"FACEBOOK", "SOUNDCLOUD", "SECRET"})
    EXPECT_THAT(linesWith(token), IsEmpty());
}

// Each service that is granted, and of which the device tells.
TEST_F(SocialTest, aServiceWithoutCredentialsIsMissing) {
  zeph::Social some = credentials();
  some.clear_facebooktoken();
  some.clear_twittertoken();
  expectSteps({{"Object.keys(social).join()", "init,soundcloud"}}, some);
}

}  // namespace
}  // namespace morvik::test
