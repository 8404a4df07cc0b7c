// signHMACSHA1 and social.twitter.sign: arguments, keys, secrets and log lines.
#include "web/signing.h"

#include <glib.h>

#include <memory>

#include "host/owned.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"
#include "web/hidden-value.h"

namespace morvik::test {
namespace {

// HMAC-SHA1 in base64, as GLib makes it.
std::string reference(const std::string& text, const std::string& key) {
  const std::unique_ptr<GHmac, Release<g_hmac_unref>> hmac(
      g_hmac_new(G_CHECKSUM_SHA1, reinterpret_cast<const guchar*>(key.data()), key.size()));
  g_hmac_update(hmac.get(), reinterpret_cast<const guchar*>(text.data()),
                static_cast<gssize>(text.size()));
  std::array<guint8, 20> digest{};
  gsize size = digest.size();
  g_hmac_get_digest(hmac.get(), digest.data(), &size);
  const std::unique_ptr<char, Release<g_free>> base64(g_base64_encode(digest.data(), size));
  return base64.get();
}

class SigningTest : public ScriptTest {
 protected:
  // What an answer of the device server leaves: social.twitter with its secrets.
  void giveTwitter(const std::string& consumerSecret, const std::string& tokenSecret) {
    const v8::Context::Scope entered(context());
    expose("signFunction", twitterSign);
    run("globalThis.social = {twitter: {sign: signFunction}}");
    const auto twitter = global("social")
                             .As<v8::Object>()
                             ->Get(context(), toScript("twitter"))
                             .ToLocalChecked()
                             .As<v8::Object>();
    setHidden(twitter, "consumersecret", toScript(consumerSecret));
    setHidden(twitter, "tokensecret", toScript(tokenSecret));
  }

  v8::Local<v8::Value> global(const char* name) {
    return context()->Global()->Get(context(), toScript(name)).ToLocalChecked();
  }
};

TEST_F(SigningTest, agreesWithTheStandardsVectors) {
  const struct {
    const char* call;  // text, key
    const char* signature;
  } vectors[] = {
      {"'Hi There', '\\x0b'.repeat(20)", "thcxhlUFcmTii8C2+zeMjvFGvgA="},
      {"'what do ya want for nothing?', 'Jefe'", "7/zfauXrL6LSdBbV8YTfnCWafHk="},
      {"'\\xdd'.repeat(50), '\\xaa'.repeat(20)", "El1zQrmsEc2Ro5r0iqF7T2PxddM="},
      {"'\\xcd'.repeat(50), Array.from({length: 25}, (x, i) => String.fromCharCode(i + "
       "1)).join('')",
       "TJAH9AJiUMa8hBT5v1DIbC1yNdo="},
      {"'Test With Truncation', '\\x0c'.repeat(20)", "TBoDQktV4H/n8nvh1Yu5MkqaWgQ="},
      {"'Test Using Larger Than Block-Size Key - Hash Key First', '\\xaa'.repeat(80)",
       "qkrl4VJy0A6VcFY3zoo7Ve1AIRI="},
      {"'Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data', "
       "'\\xaa'.repeat(80)",
       "6OmdD0UjfXhta7qnllx4CLv/GpE="},
  };
  for (const auto& vector : vectors) {
    SCOPED_TRACE(vector.call);
    EXPECT_EQ(run(std::string("signHMACSHA1(") + vector.call + ")"), vector.signature);
  }
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(SigningTest, takesAnythingAsText) {
  const struct {
    const char* call;
    std::string text;
    std::string key;
  } rows[] = {
      {"'', ''", "", ""},
      {"1, 2", "1", "2"},
      {"undefined, null", "undefined", "null"},
      {"{}, [1, 2]", "[object Object]", "1,2"},
      {"{toString() { return 'own'; }}, true", "own", "true"},
      {"'\\u0141\\u00e9', '\\u20ac'", "A\xe9", "\xac"},  // the low byte of each unit
      {"'a\\0b', 'c\\0'", "a b", "c "},                  // a zero byte as a blank
      {"'x', 'k'.repeat(64)", "x", std::string(64, 'k')},
      {"'x', 'k'.repeat(65)", "x", std::string(65, 'k')},
      {"'t'.repeat(4032), 'k'", std::string(4032, 't'), "k"},
      {"'t'.repeat(4033), 'k'", std::string(4033, 't'), "k"},  // more than the first area takes
      {"'t'.repeat(300000), 'k'", std::string(300000, 't'), "k"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    const std::string signature = run(std::string("signHMACSHA1(") + row.call + ")");
    EXPECT_EQ(signature, reference(row.text, row.key));
    EXPECT_EQ(signature.size(), 28u);
  }
  EXPECT_EQ(run("typeof signHMACSHA1('a', 'b')"), "string");
}

TEST_F(SigningTest, wantsExactlyTwo) {
  for (const char* call : {"signHMACSHA1()", "signHMACSHA1('a')", "signHMACSHA1('a', 'b', 'c')"}) {
    EXPECT_EQ(run(call), "throws: SignHMACSHA1: Wrong arguments");
  }
  EXPECT_EQ(run("try { signHMACSHA1(); } catch (e) { typeof e; }"), "string");
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(SigningTest, passesExceptionsOfConversionsTextFirst) {
  const std::string bad = "var bad = text => ({toString() { throw text; }});";
  EXPECT_EQ(run(bad + "signHMACSHA1(bad('text'), bad('key'))"), "throws: text");
  EXPECT_EQ(run("signHMACSHA1('a', bad('key'))"), "throws: key");
  EXPECT_EQ(run("signHMACSHA1(Symbol('s'), 'a')"),
            "throws: TypeError: Cannot convert a Symbol value to a string");
}

TEST_F(SigningTest, twitterSignsWithBothSecretsEscaped) {
  const struct {
    const char* consumer;
    const char* token;
    const char* escapedConsumer;
    const char* escapedToken;
  } rows[] = {
      {"consumer", "token", "consumer", "token"},
      {"a&b", "c+d", "a%26b", "c%2Bd"},
      {"consumer", "", "consumer", ""},
      {"", "", "", ""},
      {"sp ace/%", "~-._", "sp%20ace%2F%25", "~-._"},
      {"\xc3\xa9", "x", "%E9", "x"},  // one byte for each unit
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.consumer);
    giveTwitter(row.consumer, row.token);
    log.clear();
    const std::string key = std::string(row.escapedConsumer) + "&" + row.escapedToken;
    EXPECT_EQ(run("social.twitter.sign('GET&http')"), reference("GET&http", key));
    EXPECT_THAT(
        levelled(log.lines()),
        ElementsAre("WARNING urlEncode : Encoded URL: " + std::string(row.escapedConsumer) + "\n",
                    "WARNING urlEncode : Encoded URL: " + std::string(row.escapedToken) + "\n"));
  }
}

TEST_F(SigningTest, twitterSignsTextsOfAnyKindAndLength) {
  giveTwitter("c", "t");
  EXPECT_EQ(run("social.twitter.sign('')"), reference("", "c&t"));
  EXPECT_EQ(run("social.twitter.sign('\\xdd\\u0141\\0')"), reference("\xdd\x41 ", "c&t"));
  EXPECT_EQ(run("social.twitter.sign('x'.repeat(10000))"),
            reference(std::string(10000, 'x'), "c&t"));
}

TEST_F(SigningTest, twitterWantsExactlyOneString) {
  giveTwitter("c", "t");
  for (const char* call : {"()", "(1)", "({})", "(new String('a'))", "('a', 'b')", "(undefined)"}) {
    SCOPED_TRACE(call);
    log.clear();
    EXPECT_EQ(run(std::string("social.twitter.sign") + call), "throws: Wrong arguments");
    EXPECT_THAT(levelled(log.lines()), ElementsAre("WARNING TwitterSign Wrong arguments"));
  }
  EXPECT_EQ(run("try { social.twitter.sign(); } catch (e) { typeof e; }"), "string");
}

TEST_F(SigningTest, theFunctionWorksDetached) {
  giveTwitter("c", "t");
  EXPECT_EQ(run("var sign = social.twitter.sign; sign('x')"), reference("x", "c&t"));
  EXPECT_EQ(run("sign.call({}, 'x')"), reference("x", "c&t"));
}

// A property of the script's own is no secret, and neither is one that an object inherits.
TEST_F(SigningTest, whereAScriptHasPutAnotherObjectTheSecretsAreUndefined) {
  giveTwitter("c", "t");
  run("var {twitter} = social; var {sign} = twitter");
  for (const char* other : {"{consumersecret: 'mine', tokensecret: 'mine'}", "5",
                            "Object.create(twitter)", "new Proxy(twitter, {})"}) {
    SCOPED_TRACE(other);
    run(std::string("social.twitter = ") + other);
    EXPECT_EQ(run("sign('x')"), reference("x", "undefined&undefined"));
  }
  EXPECT_THAT(run("social = undefined; sign('x')"), testing::StartsWith("throws: TypeError"));
  EXPECT_EQ(run("social = {get twitter() { throw 'mine'; }}; sign('x')"), "throws: mine");
}

// One without the other would tell it sooner.
TEST_F(SigningTest, bothSecretsAreOfOneObject) {
  giveTwitter("c", "t");
  run("var {twitter} = social; var {sign} = twitter; var reads = 0;"
      "Object.defineProperty(globalThis, 'social',"
      "                      {get() { return {twitter: reads++ ? {} : twitter}; }}); 0");
  EXPECT_EQ(run("sign('x')"), reference("x", "c&t"));
  EXPECT_EQ(run("reads"), "1");
}

TEST_F(SigningTest, looksAtItsArgumentsFirst) {
  giveTwitter("c", "t");
  run("var {sign} = social.twitter; social = undefined");
  log.clear();
  EXPECT_EQ(run("sign(1)"), "throws: Wrong arguments");
  EXPECT_THAT(levelled(log.lines()), ElementsAre("WARNING TwitterSign Wrong arguments"));
}

TEST_F(SigningTest, aScriptCannotReadTheSecrets) {
  giveTwitter("hush", "quiet");
  EXPECT_EQ(run("JSON.stringify([Reflect.ownKeys(social.twitter), social.twitter.consumersecret,"
                "  social.twitter.tokensecret, social.twitter, {...social.twitter},"
                "  Object.assign({}, social.twitter)])"),
            "[[\"sign\"],null,null,{},{},{}]");
}

}  // namespace
}  // namespace morvik::test
