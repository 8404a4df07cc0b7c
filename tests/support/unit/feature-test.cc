// The tables of the device features' tests.
#include "support/unit/feature-test.h"

#include <string_view>

#include "support/unit/log-texts.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

constexpr const char* kGlobals = R"(
  var f = function() {};
  var bad = {toString() { throw 'no text'; }};
  var result = true;
  var order = '';
  var read = name => ({toString() { order += name; return '1'; }});
  var tell = function() {
    const shown = Array.from(arguments, a =>
        typeof a + ' ' + (typeof a === 'object' ? JSON.stringify(a) : a));
    log(shown.join(', ') + (this === tell ? '' : ' with another this'));
    return result;
  };
)";

// What the channel writes about every message and every listener.
bool isChannels(std::string_view text) {
  for (const char* prefix :
       {"Sending MSG\n", "zephmsg callback handler", "function pointer: ", "callback data: ",
        "response: ", "adding listener : ", "calling listener : "}) {
    if (text.starts_with(prefix)) return true;
  }
  return false;
}

}  // namespace

FeatureTest::FeatureTest() { run(kGlobals); }

Lines FeatureTest::ownLines() const {
  std::vector<LogLine> lines = log.lines();
  std::erase_if(lines, [](const LogLine& line) { return isChannels(line.text); });
  return levelled(lines);
}

void FeatureTest::expectOneMessage(const std::string& payload) {
  auto message = sent();
  ASSERT_TRUE(message);
  EXPECT_THAT(message->id(), testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
  message->clear_id();
  EXPECT_EQ(message->ShortDebugString(), "interactiveId: \"granted\" " + payload);
  EXPECT_FALSE(sent());
}

void FeatureTest::expectSends(const std::vector<SentRow>& rows) {
  becomeInteractive("granted");
  for (const SentRow& row : rows) {
    SCOPED_TRACE(row.call);
    log.clear();
    EXPECT_EQ(run(row.call), "undefined");
    EXPECT_EQ(ownLines(), row.lines);
    expectOneMessage(row.payload);
  }
}

void FeatureTest::expectForgets(const std::string& call, const std::string& answerText) {
  SCOPED_TRACE(call);
  becomeInteractive("granted");
  run("var reference; (function() { const kept = function() {};"
      "  reference = new WeakRef(kept); " +
      call + "; })()");
  const auto request = sent();
  ASSERT_TRUE(request);
  isolate()->LowMemoryNotification();
  EXPECT_EQ(run("typeof reference.deref()"), "function");
  answer(*request, zephMsg(answerText));
  isolate()->LowMemoryNotification();
  EXPECT_EQ(run("typeof reference.deref()"), "undefined");
}

void FeatureTest::expectReads(const std::string& call, const std::string& order) {
  SCOPED_TRACE(call);
  becomeInteractive("granted");
  run("order = ''");
  EXPECT_EQ(run(call), "undefined");
  EXPECT_EQ(run("order"), order);
  EXPECT_TRUE(sent());
}

void FeatureTest::expectRefused(const std::vector<std::string>& calls, const std::string& text) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const std::string& call : calls) {
      SCOPED_TRACE(call + (interactive ? ", interactive" : ", not interactive"));
      expectThrows(call, text);
      EXPECT_EQ(ownLines(), Lines());
      EXPECT_FALSE(sent());
    }
  }
}

void FeatureTest::expectNeedsInteractive(const std::vector<std::string>& calls) {
  for (const std::string& call : calls) {
    SCOPED_TRACE(call);
    expectThrows(call, "Must be in interactive mode");
    EXPECT_EQ(ownLines(), Lines());
    EXPECT_FALSE(sent());
  }
}

void FeatureTest::expectPassesExceptions(const std::vector<std::string>& calls,
                                         const Lines& lines) {
  becomeInteractive();
  for (const std::string& call : calls) {
    SCOPED_TRACE(call);
    expectThrows(call, "no text");
    EXPECT_EQ(ownLines(), lines);
    EXPECT_FALSE(sent());
  }
}

void FeatureTest::expectAnswered(const std::string& call, const std::vector<HeardRow>& rows) {
  becomeInteractive();
  for (const HeardRow& row : rows) {
    SCOPED_TRACE(call + " answered by " + row.message);
    run(call);
    const auto request = sent();
    ASSERT_TRUE(request);
    log.clear();
    answer(*request, zephMsg(row.message));
    EXPECT_EQ(ownLines(), row.lines);
  }
}

void FeatureTest::expectListens(const std::string& addListener, const std::vector<HeardRow>& rows) {
  EXPECT_EQ(run(addListener + "(tell)"), "undefined");
  for (const HeardRow& row : rows) {
    SCOPED_TRACE(row.message);
    log.clear();
    deliver(zephMsg(row.message));
    EXPECT_EQ(ownLines(), row.lines);
  }
  for (const char* arguments : {"()", "(5)", "({})", "(null)", "('f')", "(f, f)", "(f, 1)"}) {
    SCOPED_TRACE(arguments);
    expectThrows(addListener + arguments, "Wrong arguments");
    EXPECT_EQ(g_list_length(instance.listeners), 1U);
  }
}

void FeatureTest::expectStaysOnlyForTrue(const std::string& addListener, const std::string& event) {
  for (const char* result :
       {"true", "false", "undefined", "1", "'true'", "null", "({})", "new Boolean(true)"}) {
    SCOPED_TRACE(result);
    const bool stays = std::string_view(result) == "true";
    run(std::string("result = ") + result + "; " + addListener + "(tell)");
    log.clear();
    deliver(zephMsg("ping {}"));
    EXPECT_EQ(g_list_length(instance.listeners), 1U) << "nothing of its own was heard";
    deliver(zephMsg(event));
    deliver(zephMsg(event));
    EXPECT_EQ(logged().size(), stays ? 2U : 1U);
    EXPECT_EQ(g_list_length(instance.listeners), stays ? 1U : 0U);
    instance.releaseListeners();
  }
  run("result = true; " + addListener + "(function() { throw 'no'; }); " + addListener + "(tell)");
  log.clear();
  deliver(zephMsg(event));
  EXPECT_EQ(logged().size(), 1U);
  EXPECT_EQ(g_list_length(instance.listeners), 1U);
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::HasSubstr(": no")));
}

}  // namespace morvik::test
