// Which URLs may carry a token.
#include "web/url-patterns.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/unit/captured-log.h"
#include "support/unit/library-spy.h"

namespace morvik::test {
namespace {

TEST(UrlPatternsTest, onlyTheServicesOwnDomainsAreAuthorised) {
  const struct {
    const char* url;
    bool authorised;
  } rows[] = {
      {"https://www.SITE.com/", true},
      {"https://graph.SITE.com/me?fields=id", true},
      {"https://api_2.SITE.com/a/b#c", true},
      {"https://Graph_API2.SITE.com/", true},
      {"https://.SITE.com/", true},     // no letter at all before the dot will do
      {"https://www.SITE/com/", true},  // any character stands for the second dot
      {"https://www.SITExcom/x", true},
      {"https://www.SITE@com/", true},
      {"https://www.SITE.com/\n", true},
      {"https://www.SITE.com/\xe9", true},
      {"http://www.SITE.com/", false},
      {"HTTPS://www.SITE.com/", false},
      {"Https://www.SITE.com/", false},
      {"https://www.SITE.com", false},
      {"https://www.SITE.com?a=/", false},
      {"https://www.SITE.com:443/", false},
      {"https://SITE.com/", false},
      {"https://a.b.SITE.com/", false},
      {"https://my-app.SITE.com/", false},
      {"https://wwwSITE.com/", false},
      {"https://www.SITE.org/", false},
      {"https://www.SITE.company/", false},
      {"https://www.SITEx.com/", false},
      {"https://www.SITE..com/", false},
      {"https://caf\xe9.SITE.com/", false},
      {"https://user@www.SITE.com/", false},
      {"https://elsewhere.com/https://www.SITE.com/", false},
      {"https://elsewhere.com/?www.SITE.com/", false},
      {" https://www.SITE.com/", false},
      {"x\nhttps://www.SITE.com/", false},
      {"www.SITE.com/", false},
      {"", false},
  };
  const CapturedLog log;
  for (const auto& row : rows) {
    for (const char* service : {"facebook", "soundcloud"}) {
      const bool isFacebook = service[0] == 'f';
      std::string url = row.url;
      if (const auto at = url.find("SITE"); at != std::string::npos) url.replace(at, 4, service);
      SCOPED_TRACE(url);
      const auto own = isFacebook ? UrlPattern::kFacebook : UrlPattern::kSoundcloud;
      const auto other = isFacebook ? UrlPattern::kSoundcloud : UrlPattern::kFacebook;
      EXPECT_EQ(isUrlAuthorised(url, own), row.authorised);
      EXPECT_FALSE(isUrlAuthorised(url, other));
    }
  }
}

TEST(UrlPatternsTest, whatTheExpressionSaysIsLogged) {
  CapturedLog log;
  ASSERT_TRUE(isUrlAuthorised("https://www.facebook.com/", UrlPattern::kFacebook));
  ASSERT_FALSE(isUrlAuthorised("https://www.facebook.com", UrlPattern::kFacebook));
  const std::string noMatch = " regexp match " + std::to_string(REG_NOMATCH);
  EXPECT_EQ(log.lines(), (std::vector<LogLine>{{G_LOG_LEVEL_MESSAGE, " regexp match 0"},
                                               {G_LOG_LEVEL_MESSAGE, noMatch}}));
}

TEST(UrlPatternsTest, aQuestionMarkAnywhereIsAQuery) {
  CapturedLog log;
  ASSERT_TRUE(isUrlAuthorised("https://www.facebook.com/", UrlPattern::kFacebook));
  log.clear();
  EXPECT_TRUE(hasQuery("https://www.facebook.com/?"));
  EXPECT_TRUE(hasQuery("https://www.facebook.com/?a=b"));
  EXPECT_TRUE(hasQuery("https://www.facebook.com/#a?b"));
  EXPECT_FALSE(hasQuery("https://www.facebook.com/"));
  EXPECT_FALSE(hasQuery("https://www.facebook.com/#a"));
  EXPECT_TRUE(log.lines().empty());
}

// Runs in a process of its own, where no pattern has been compiled yet. Ends it with status 0 when
// a URL is refused for as long as one pattern is broken, and taken from then on, for good.
void expectRetry(const std::string& broken) {
  const std::string url = "https://www.facebook.com/";
  CapturedLog log;
  bool right = true;
  {
    LibrarySpy spy;
    spy.brokenPattern = broken;
    for (int i = 0; i < 2; ++i) right = right && !isUrlAuthorised(url, UrlPattern::kFacebook);
  }
  const LogLine refusal{G_LOG_LEVEL_DEBUG, "bad pattern: '" + broken + "'\n"};
  right = right && log.lines() == std::vector<LogLine>{refusal, refusal};
  right = right && isUrlAuthorised(url, UrlPattern::kFacebook);
  LibrarySpy spy;
  spy.brokenPattern = broken;
  std::exit(right && isUrlAuthorised(url, UrlPattern::kFacebook) ? 0 : 1);
}

TEST(UrlPatternsDeathTest, whileAPatternDoesNotCompileNoUrlIsAuthorised) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const char* broken : {"^https://[[:alnum:]_]*\\.facebook.com/.*$",
                             "^https://[[:alnum:]_]*\\.soundcloud.com/.*$", "\\?"}) {
    EXPECT_EXIT(expectRetry(broken), testing::ExitedWithCode(0), "") << broken;
  }
}

TEST(UrlPatternsTest, aTextThatIsNoExpressionIsLogged) {
  CapturedLog log;
  EXPECT_FALSE(CompiledPattern().compile("("));
  EXPECT_EQ(log.lines(), (std::vector<LogLine>{{G_LOG_LEVEL_DEBUG, "bad pattern: '('\n"}}));
  CompiledPattern fine;
  EXPECT_TRUE(fine.compile("^a+$"));
  EXPECT_EQ(fine.match("aa"), 0);
  EXPECT_EQ(fine.match("ab"), REG_NOMATCH);
  EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace
}  // namespace morvik::test
