// social.init: its query, what hangs on `social` once it is answered, and that no credential of the
// answer is in the log.
#include "support/system/system-test.h"
#include "support/text-message.h"

namespace morvik::test {
namespace {

const std::string kTwitter =
    "twitterConsumerKey: 'SECRET ck' twitterConsumerSecret: 'SECRET cs' twitterToken: 'SECRET tk' "
    "twitterTokenSecret: 'SECRET ts' ";
const std::string kFacebook = "facebookToken: 'SECRET fb' ";
const std::string kSoundcloud = "soundcloudToken: 'SECRET sc' ";

class SocialInitTest : public DeviceTest {
 protected:
  // Answers the next query with credentials in text form.
  void answer(const std::string& credentials) {
    zeph::ZephMsg reply = replyTo(device.receive());
    reply.MergeFrom(zephMsg("social { " + credentials + " }"));
    device.send(reply);
  }

  // What `social` has after an answer, in an application with these accesses. Before it there is
  // `init` alone.
  void expectMembers(const std::vector<std::string>& accesses, const std::string& credentials,
                     const std::string& members) {
    connect(
        "var tell = function() { log(Object.keys(social).join()); }; tell(); social.init(tell);",
        accesses);
    EXPECT_EQ(app.logged(), "init");
    answer(credentials);
    EXPECT_EQ(app.logged(), members) << credentials;
  }

  // An application that asks again as often as it is answered, and then begins anew.
  void expectMembersInTurn(const std::vector<std::pair<std::string, std::string>>& rows) {
    connect(
        "var ask = function() { social.init(function() {"
        " log(Object.keys(social).join());"
        " delete social.twitter; delete social.facebook; delete social.soundcloud; ask(); }); };"
        "ask();",
        {"twitter", "facebook", "soundcloud"});
    for (const auto& [credentials, members] : rows) {
      answer(credentials);
      EXPECT_EQ(app.logged(), members) << credentials;
    }
  }
};

TEST_F(SocialInitTest, asksWithoutAnInteractiveId) {
  interactive("social.init(function() {}); social.init(function() {}, {});", {});
  for (int i = 0; i < 2; ++i) {
    zeph::ZephMsg query = device.receive();
    EXPECT_THAT(query.id(), testing::MatchesRegex(kUuid));
    query.clear_id();
    EXPECT_EQ(query.ShortDebugString(), "socialQuery { }");
  }
}

TEST_F(SocialInitTest, refusesOtherArguments) {
  expectThrown({"social.init()", "social.init(5)", "social.init({})", "social.init(log, 5)",
                "social.init(log, 'x')", "social.init(log, null)", "social.init(log, {}, {})"},
               "string: Wrong arguments");
}

TEST_F(SocialInitTest, beforeAConnectionIsFatal) {
  apps.file("early", "main.js", "social.init(function() {});");
  apps.gate("early");
  app = launch("early");
  EXPECT_EQ(endOf(app, [this] { apps.openGate("early", descriptorXml({})); }), killedBy(SIGTRAP));
  EXPECT_EQ(app.texts().back(), "send failed: Bad file descriptor");
}

TEST_F(SocialInitTest, givesItsFunctionTheClosureOrNothing) {
  connect(
      "var closure = {}; var hear = function() {"
      " log([arguments.length, arguments[0] === closure, this === hear].join()); };"
      "social.init(hear); social.init(hear, closure); social.init(hear);");
  answer(kFacebook);
  EXPECT_EQ(app.logged(), "0,false,true");
  answer("");
  EXPECT_EQ(app.logged(), "1,true,true");
  device.reply(device.receive(), "ERROR");
  EXPECT_EQ(app.logged(), "0,false,true");
}

TEST_F(SocialInitTest, aServiceNeedsItsGrant) {
  const std::string all = kTwitter + kFacebook + kSoundcloud;
  expectMembers({"twitter"}, all, "init,twitter");
  expectMembers({"facebook"}, all, "init,facebook");
  expectMembers({"soundcloud"}, all, "init,soundcloud");
}

TEST_F(SocialInitTest, aServiceWithoutAGrantNeedsNoExcuse) {
  expectMembers({"led", "http"}, kTwitter + kFacebook, "init");
  expectMembers({"facebook"}, kSoundcloud, "init");
}

TEST_F(SocialInitTest, aServiceNeedsAllItsCredentials) {
  expectMembersInTurn({
      {kTwitter + kFacebook + kSoundcloud, "init,twitter,facebook,soundcloud"},
      {kSoundcloud + kFacebook, "init,facebook,soundcloud"},
      {kTwitter, "init,twitter"},
      {"", "init"},
      {"twitterConsumerSecret: 'b' twitterToken: 'c' twitterTokenSecret: 'd'", "init"},
      {"twitterConsumerKey: 'a' twitterToken: 'c' twitterTokenSecret: 'd'", "init"},
      {"twitterConsumerKey: 'a' twitterConsumerSecret: 'b' twitterTokenSecret: 'd'", "init"},
      {"twitterConsumerKey: 'a' twitterConsumerSecret: 'b' twitterToken: 'c'", "init"},
  });
}

TEST_F(SocialInitTest, aLaterAnswerChangesWhatIsThere) {
  connect(
      "social.init(function() {"
      " var kept = social.twitter; kept.mine = 1;"
      " social.init(function() {"
      "  log([kept === social.twitter, kept.mine, kept.oauth_token].join()); }); });",
      {"twitter"});
  answer(kTwitter);
  answer(
      "twitterConsumerKey: 'a' twitterConsumerSecret: 'b' twitterToken: 'new' "
      "twitterTokenSecret: 'd'");
  EXPECT_EQ(app.logged(), "true,1,new");
}

TEST_F(SocialInitTest, noCredentialOfTheAnswerIsInTheLog) {
  startHost({.arguments = {"--debug=7"}});
  connect("social.init(function() { log('answered'); });", {"twitter", "facebook", "soundcloud"});
  answer(kTwitter + kFacebook + kSoundcloud);
  EXPECT_EQ(app.logged(), "answered");
  const std::string errors = host().errors().await("JSLOG: answered");
  EXPECT_THAT(errors, testing::HasSubstr("DEBUG: getSocialCallbackFunction"));
  EXPECT_THAT(errors, testing::Not(testing::HasSubstr("SECRET")));
  for (const LogRecord& record : app.records())
    EXPECT_THAT(record.text, testing::Not(testing::HasSubstr("SECRET")));
}

}  // namespace
}  // namespace morvik::test
