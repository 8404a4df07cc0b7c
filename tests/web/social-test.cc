// social.init: arguments, the query, and what its answer hangs on `social`.
#include "web/social.h"

#include "support/fresh-id.h"
#include "support/text-message.h"
#include "support/unit/feature-test.h"
#include "support/unit/granted.h"
#include "web/hidden-value.h"

namespace morvik::test {
namespace {

const std::string kHeard = "DEBUG getSocialCallbackFunction";
const std::string kTwitter =
    "twitterConsumerKey: 'ck' twitterConsumerSecret: 'cs' twitterToken: 'tk' "
    "twitterTokenSecret: 'ts' ";
const std::string kFacebook = "facebookToken: 'fb' ";
const std::string kSoundcloud = "soundcloudToken: 'sc' ";

class SocialTest : public FeatureTest {
 protected:
  // One social.init with `tell`, answered with these credentials.
  void answerInit(const std::string& credentials) {
    run("social.init(tell)");
    const auto request = sent();
    ASSERT_TRUE(request);
    answer(*request, zephMsg("social {" + credentials + "}"));
  }

  std::string members() { return run("Object.keys(social).join()"); }

  // What stands behind an object of the script's, as text.
  std::string hiddenOf(const std::string& expression, const char* name) {
    const v8::HandleScope handles(isolate());
    const v8::Context::Scope entered(context());
    return *utf8Text(isolate(), hidden(object(expression), name));
  }
};

TEST_F(SocialTest, standsOnTheGlobalObjectWhateverIsGranted) {
  EXPECT_EQ(run("typeof morvik.social"), "undefined");
  EXPECT_EQ(members(), "init");
  EXPECT_EQ(run("String(social.twitter) + social.facebook + social.soundcloud"),
            "undefinedundefinedundefined");
}

TEST_F(SocialTest, sendsAnEmptyQueryWithoutAnInteractiveId) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* call : {"social.init(f)", "social.init(f, {})", "social.init(f, [])",
                             "social.init(f, f)", "social.init(f, new Proxy({}, {}))"}) {
      SCOPED_TRACE(call);
      log.clear();
      EXPECT_EQ(run(call), "undefined");
      EXPECT_EQ(ownLines(), Lines());
      auto message = sent();
      ASSERT_TRUE(message);
      EXPECT_THAT(message->id(), testing::MatchesRegex(kUuid));
      message->clear_id();
      EXPECT_EQ(message->ShortDebugString(), "socialQuery { }");
      EXPECT_FALSE(sent());
    }
  }
}

TEST_F(SocialTest, refusesOtherArguments) {
  expectRefuses(wrong({
      "social.init()",
      "social.init(5)",
      "social.init({})",
      "social.init('f')",
      "social.init(null)",
      "social.init({}, {})",
      "social.init({}, f)",
      "social.init(f, 5)",
      "social.init(f, 'x')",
      "social.init(f, null)",
      "social.init(f, undefined)",
      "social.init(f, true)",
      "social.init(f, {}, {})",
      "social.init(f, {}, undefined)",
      "social.init(f, 1, 2)",
  }));
}

using SocialDeathTest = SocialTest;

TEST_F(SocialDeathTest, withoutAConnectionTheSendIsFatal) {
  instance.socket = -1;
  EXPECT_DEATH(run("social.init(f)"), "fatal: send failed: Bad file descriptor");
}

TEST_F(SocialTest, callsTheFunctionWithItsClosureOrWithNothing) {
  run("var closure = {}; function hear(...all) {"
      "  log([all.length, all[0] === closure, this === hear].join());"
      "}"
      "social.init(hear); social.init(hear, closure); social.init(hear, closure)");
  for (int i = 0; i < 3; ++i) answer(*sent(), zephMsg("social { }"));
  EXPECT_THAT(logged(), ElementsAre("0,false,true", "1,true,true", "1,true,true"));
}

TEST_F(SocialTest, theFunctionIsCalledInEveryCaseButOnce) {
  run("social.init(tell)");
  const auto request = sent();
  ASSERT_TRUE(request);
  log.clear();
  respond(*request, zeph::ERROR);
  EXPECT_EQ(ownLines(), (Lines{kHeard, "MESSAGE JSLOG: "}));
  EXPECT_EQ(members(), "init");
  answer(*request, zephMsg("social {" + kFacebook + "}"));
  EXPECT_EQ(ownLines(), (Lines{kHeard, "MESSAGE JSLOG: ", kHeard}));
  EXPECT_EQ(members(), "init") << "the first answer was the one that counts";
}

TEST_F(SocialTest, aServiceNeedsItsGrantAndAllItsData) {
  const std::string all = kTwitter + kFacebook + kSoundcloud;
  const std::string everything = "twitter facebook soundcloud";
  const struct {
    std::string granted;
    std::string credentials;
    const char* members;
  } rows[] = {
      {everything, all, "init,twitter,facebook,soundcloud"},
      {everything, kSoundcloud + kFacebook, "init,facebook,soundcloud"},
      {everything, kTwitter, "init,twitter"},
      {everything, "", "init"},
      {"twitter", all, "init,twitter"},
      {"facebook", all, "init,facebook"},
      {"soundcloud", all, "init,soundcloud"},
      {"facebook", kSoundcloud, "init"},
      {"http led", all, "init"},
      {"", all, "init"},
      {"Twitter FACEBOOK", all, "init"},
      {everything, "facebookToken: ''", "init,facebook"},
      {everything, "twitterConsumerSecret: 'b' twitterToken: 'c' twitterTokenSecret: 'd'", "init"},
      {everything, "twitterConsumerKey: 'a' twitterToken: 'c' twitterTokenSecret: 'd'", "init"},
      {everything, "twitterConsumerKey: 'a' twitterConsumerSecret: 'b' twitterTokenSecret: 'd'",
       "init"},
      {everything, "twitterConsumerKey: 'a' twitterConsumerSecret: 'b' twitterToken: 'c'", "init"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.granted + " / " + row.credentials);
    run("delete social.twitter; delete social.facebook; delete social.soundcloud");
    instance.descriptor = granted(row.granted);
    log.clear();
    answerInit(row.credentials);
    EXPECT_EQ(members(), row.members);
    EXPECT_EQ(ownLines(), (Lines{kHeard, "MESSAGE JSLOG: "}));
  }
}

TEST_F(SocialTest, whatScriptsSeeOfTheServices) {
  answerInit(kTwitter + kFacebook + kSoundcloud);
  const struct {
    const char* source;
    const char* text;
  } rows[] = {
      {"Reflect.ownKeys(social.twitter).join()", "sign,oauth_consumer_key,oauth_token"},
      {"Reflect.ownKeys(social.facebook).join()", "get,post"},
      {"Reflect.ownKeys(social.soundcloud).join()", "get,post"},
      {"JSON.stringify(social.twitter)", R"({"oauth_consumer_key":"ck","oauth_token":"tk"})"},
      {"JSON.stringify(social.facebook)", "{}"},
      {"social.facebook.token", "undefined"},
      {"social.twitter.tokensecret", "undefined"},
      {"social.twitter.consumersecret", "undefined"},
      {"JSON.stringify(Object.getOwnPropertyDescriptor(social.twitter, 'oauth_token'))",
       R"({"value":"tk","writable":true,"enumerable":true,"configurable":true})"},
      {"social.facebook.get.name + social.soundcloud.post.name + social.twitter.sign.name",
       "getpostsign"},
      {"Object.getPrototypeOf(social.facebook) === Object.prototype", "true"},
      {"social.facebook instanceof Object", "true"},
  };
  for (const auto& row : rows) EXPECT_EQ(run(row.source), row.text) << row.source;
}

TEST_F(SocialTest, whatStaysHiddenBehindThem) {
  answerInit(kTwitter + kFacebook + kSoundcloud);
  EXPECT_EQ(hiddenOf("social.twitter", "consumersecret"), "cs");
  EXPECT_EQ(hiddenOf("social.twitter", "tokensecret"), "ts");
  EXPECT_EQ(hiddenOf("social.twitter", "token"), "undefined");
  EXPECT_EQ(hiddenOf("social.facebook", "token"), "fb");
  EXPECT_EQ(hiddenOf("social.soundcloud", "token"), "sc");
  for (const char* copy : {"Object.assign({}, social.facebook)", "({...social.facebook})",
                           "Object.create(social.facebook)", "new Proxy(social.facebook, {})",
                           "JSON.parse(JSON.stringify(social.facebook))",
                           "Object.fromEntries(Object.entries(social.facebook))"}) {
    EXPECT_EQ(hiddenOf(copy, "token"), "undefined") << copy;
  }
}

TEST_F(SocialTest, signsWithTheHiddenSecrets) {
  answerInit(kTwitter);
  EXPECT_EQ(run("social.twitter.sign('text')"), run("signHMACSHA1('text', 'cs&ts')"));
  EXPECT_EQ(run("var sign = social.twitter.sign; sign('text')"),
            run("signHMACSHA1('text', 'cs&ts')"));
}

TEST_F(SocialTest, aLaterInitUpdatesTheObjectsInPlace) {
  answerInit(kTwitter + kFacebook);
  run("var kept = social.facebook; kept.mine = 1; kept.get = 5; social.twitter.oauth_token = 'x'");
  answerInit("facebookToken: 'new' " + kSoundcloud);
  EXPECT_EQ(run("kept === social.facebook && kept.mine === 1 && typeof kept.get"), "function");
  EXPECT_EQ(hiddenOf("kept", "token"), "new");
  EXPECT_EQ(run("social.twitter.oauth_token"), "x") << "nothing came for that service";
  EXPECT_EQ(members(), "init,twitter,facebook,soundcloud");
  answerInit("");
  EXPECT_EQ(hiddenOf("kept", "token"), "new");
  run("social.init(tell)");
  respond(*sent(), zeph::OK);
  EXPECT_EQ(hiddenOf("kept", "token"), "new") << "an answer about no account at all";
  EXPECT_EQ(members(), "init,twitter,facebook,soundcloud");
}

TEST_F(SocialTest, aGatewayHasItsTokenBeforeItsFunctions) {
  run("social.facebook = new Proxy({}, {defineProperty() { throw 'mine'; }})");
  answerInit(kFacebook);
  EXPECT_EQ(hiddenOf("social.facebook", "token"), "fb");
  EXPECT_EQ(run("typeof social.facebook.get"), "undefined");
}

TEST_F(SocialTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("social.init(kept)", "social { }");
  expectForgets("social.init(f, kept)", "social { }");
}

TEST_F(SocialTest, queriesAreAnsweredEachOnItsOwn) {
  run("social.init(() => log('first')); social.init(() => log('second'))");
  const auto first = sent();
  const auto second = sent();
  ASSERT_TRUE(first && second);
  answer(*second, zephMsg("social { }"));
  answer(*first, zephMsg("social { }"));
  EXPECT_THAT(logged(), ElementsAre("second", "first"));
}

TEST_F(SocialTest, whatAScriptPutsInThePlaceOfSocialIsNoHarm) {
  const char* const replacements[] = {
      "social = 5",
      "social = null",
      "social = undefined",
      "social = 'text'",
      "social = Symbol()",
      "delete globalThis.social",
      "social = Object.freeze({init})",
      "social = [init]",
      "social = f",
      "social = globalThis",
      "social = new Proxy({init}, {})",
      "social = {facebook: 5, twitter: null, soundcloud: 'x'}",
      "social = {facebook: f, twitter: [], soundcloud: new Map()}",
      "social = {facebook: Object.freeze({}), twitter: Object.freeze({}), soundcloud: social}",
      "social = {set facebook(v) { throw 1; }, get twitter() { return {}; }, soundcloud: 1n}",
      "social = {facebook: new Uint8Array(2), twitter: new Proxy({}, {}), soundcloud: new Date()}",
      "social = Object.create({facebook: {}, twitter: {}})",
      "var {proxy, revoke} = Proxy.revocable(f, {}); social = {facebook: proxy}",
  };
  run("var original = social; var init = social.init");
  for (const char* replacement : replacements) {
    SCOPED_TRACE(replacement);
    run("social = original");
    run(std::string(replacement) + "; 0");
    run("init(tell)");
    const auto request = sent();
    ASSERT_TRUE(request);
    log.clear();
    answer(*request, zephMsg("social {" + kTwitter + kFacebook + kSoundcloud + "}"));
    EXPECT_EQ(ownLines(), (Lines{kHeard, "MESSAGE JSLOG: "}));
  }
}

TEST_F(SocialTest, whatAScriptsOwnObjectsThrowIsReportedAndTheFunctionIsCalled) {
  const struct {
    const char* replacement;
    int reports;
  } rows[] = {
      {"Object.defineProperty(globalThis, 'social',"
       "    {get() { throw 'mine'; }, configurable: true})",
       1},
      {"social = new Proxy({}, {has() { throw 'mine'; }})", 3},
      {"social = new Proxy({}, {get() { throw 'mine'; }, has() { return true; }})", 3},
      {"social = new Proxy({}, {defineProperty() { throw 'mine'; }})", 3},
      {"social = {get facebook() { throw 'mine'; }}", 1},
      {"social = {twitter: new Proxy({}, {defineProperty() { throw 'mine'; }})}", 1},
      {"social = {soundcloud: new Proxy({}, {defineProperty() { throw 'mine'; }})}", 1},
  };
  run("var original = social; var init = social.init");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.replacement);
    run("Object.defineProperty(globalThis, 'social',"
        "    {value: original, writable: true, configurable: true}); 0");
    run(std::string(row.replacement) + "; 0");
    run("init(tell)");
    const auto request = sent();
    ASSERT_TRUE(request);
    log.clear();
    answer(*request, zephMsg("social {" + kTwitter + kFacebook + kSoundcloud + "}"));
    EXPECT_THAT(logged(), ElementsAre(""));
    int reports = 0;
    for (const std::string& line : log.texts(G_LOG_LEVEL_WARNING)) {
      reports += line.ends_with(": mine") ? 1 : 0;
    }
    EXPECT_EQ(reports, row.reports);
  }
}

TEST_F(SocialTest, oneServiceThatFailsDoesNotKeepTheOthersAway) {
  run("social.twitter = new Proxy({}, {defineProperty() { throw 'mine'; }})");
  answerInit(kTwitter + kFacebook);
  EXPECT_EQ(run("Reflect.ownKeys(social.facebook).join()"), "get,post");
  EXPECT_EQ(hiddenOf("social.facebook", "token"), "fb");
  EXPECT_EQ(hiddenOf("social.twitter", "tokensecret"), "undefined");
}

TEST_F(SocialTest, aFrozenObjectKeepsItsPropertiesAndTakesTheNewToken) {
  answerInit(kFacebook);
  run("Object.freeze(social.facebook); Object.freeze(social)");
  answerInit("facebookToken: 'new' " + kSoundcloud);
  EXPECT_EQ(hiddenOf("social.facebook", "token"), "new");
  EXPECT_EQ(members(), "init,facebook");
}

TEST_F(SocialTest, settersNeverRunAndProxiesNeverSeeASecret) {
  run("var seen = []; for (const name of ['token', 'consumersecret', 'tokensecret', 'oauth_token', "
      "'post'])"
      "  Object.defineProperty(Object.prototype, name, {set(v) { seen.push('setter ' + name); }});"
      "const watch = {get(_, what) { return (...all) => {"
      "  seen.push([what, String(all[1]), typeof all[2] === 'object' ? all[2].value : ''].join(' "
      "'));"
      "  return Reflect[what](...all); }; }};"
      "social.facebook = new Proxy({}, new Proxy({}, watch));"
      "social.twitter = new Proxy({}, new Proxy({}, watch)); 0");
  answerInit(kTwitter + "facebookToken: 'SECRET' ");
  EXPECT_THAT(run("seen.map(s => s.replace(/ function .*/, '')).join('; ')"),
              testing::AllOf(testing::HasSubstr("defineProperty get"),
                             testing::HasSubstr("defineProperty oauth_token tk"),
                             testing::Not(testing::HasSubstr("setter")),
                             testing::Not(testing::HasSubstr("SECRET")),
                             testing::Not(testing::HasSubstr("secret"))));
  EXPECT_EQ(hiddenOf("social.facebook", "token"), "SECRET");
}

TEST_F(SocialTest, aFunctionThatThrowsIsReported) {
  run("social.init(() => { throw 'mine'; })");
  answer(*sent(), zephMsg("social { }"));
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::HasSubstr("mine")));
}

}  // namespace
}  // namespace morvik::test
