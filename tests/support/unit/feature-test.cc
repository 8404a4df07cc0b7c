// Runs the rows of features in process.
#include "support/unit/feature-test.h"

#include <algorithm>
#include <string_view>

#include "features/features.h"
#include "features/prelude.h"
#include "support/fresh-id.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

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

FeatureTest::FeatureTest(std::string feature) : feature_(std::move(feature)) {
  // As the first application of a test of the real program.
  if (!feature_.empty()) instance.appName = "app1";
  run(kPrelude);
}

std::string FeatureTest::called(const std::string& call) const {
  return feature_.empty() ? call : "morvik." + feature_ + "." + call;
}

Lines FeatureTest::ownLines() const {
  std::vector<LogLine> lines = log.lines();
  std::erase_if(lines, [](const LogLine& line) { return isChannels(line.text); });
  return levelled(lines);
}

void FeatureTest::expectOneMessage(const std::string& payload) {
  auto message = sent();
  ASSERT_TRUE(message);
  EXPECT_THAT(message->id(), testing::MatchesRegex(kUuid));
  message->clear_id();
  EXPECT_EQ(message->ShortDebugString(), "interactiveId: \"granted\" " + payload);
  EXPECT_FALSE(sent());
}

void FeatureTest::expectFunctions(const std::string& names) {
  std::vector<std::string> others = accessNames();
  std::erase(others, feature_);
  const std::string object = "morvik." + feature_;
  EXPECT_EQ(inTree(others, "typeof " + object), "undefined");
  EXPECT_EQ(inTree({feature_}, "Object.keys(" + object + ").join()"), names);
  EXPECT_EQ(inTree({feature_}, "Object.values(" + object + ").every(f => typeof f === 'function')"),
            "true");
}

void FeatureTest::expectSends(const std::vector<SentRow>& rows) {
  ASSERT_FALSE(rows.empty());
  becomeInteractive("granted");
  for (const SentRow& row : rows) {
    SCOPED_TRACE(row.call);
    log.clear();
    EXPECT_EQ(run(called(row.call)), "undefined");
    EXPECT_EQ(ownLines(), row.lines);
    if (row.payload.empty()) {
      EXPECT_FALSE(sent());
    } else {
      expectOneMessage(row.payload);
    }
  }
}

void FeatureTest::expectRefusal(const std::string& call, const std::string& text,
                                const Lines& lines) {
  SCOPED_TRACE(call);
  const guint listeners = g_list_length(instance.listeners);
  expectThrows(called(call), text);
  EXPECT_EQ(ownLines(), lines);
  EXPECT_EQ(g_list_length(instance.listeners), listeners);
  EXPECT_FALSE(sent());
}

void FeatureTest::expectRefuses(const std::vector<RefusedRow>& rows) {
  ASSERT_FALSE(rows.empty());
  instance.interactiveID.reset();
  for (const RefusedRow& row : rows)
    if (!row.outside.empty()) expectRefusal(row.call, row.outside, row.lines);
  becomeInteractive();
  for (const RefusedRow& row : rows)
    if (!row.inside.empty()) expectRefusal(row.call, row.inside, row.lines);
}

void FeatureTest::expectReads(const std::vector<ReadRow>& rows) {
  ASSERT_FALSE(rows.empty());
  becomeInteractive("granted");
  for (const ReadRow& row : rows) {
    SCOPED_TRACE(row.call);
    run("order = ''");
    EXPECT_EQ(run(called(row.call)), "undefined");
    EXPECT_EQ(run("order"), row.order);
    EXPECT_TRUE(sent());
  }
}

void FeatureTest::expectAnswered(const std::vector<AnsweredRow>& rows) {
  ASSERT_FALSE(rows.empty());
  becomeInteractive();
  std::optional<zeph::ZephMsg> request;
  for (const AnsweredRow& row : rows) {
    SCOPED_TRACE(row.call + " answered by " + row.answer);
    if (!row.call.empty()) {
      run(called(row.call));
      request = sent();
    }
    ASSERT_TRUE(request);
    log.clear();
    answer(*request, zephMsg(row.answer));
    EXPECT_EQ(ownLines(), row.lines);
  }
}

void FeatureTest::expectHears(const std::vector<HeardRow>& rows, const std::string& addListener) {
  ASSERT_FALSE(rows.empty());
  instance.interactiveID.reset();
  EXPECT_EQ(run(called(addListener) + "(tell)"), "undefined");
  for (const HeardRow& row : rows) {
    SCOPED_TRACE(row.message);
    log.clear();
    deliver(zephMsg(row.message));
    EXPECT_EQ(ownLines(), row.lines);
  }
  EXPECT_EQ(g_list_length(instance.listeners), 1U);
}

void FeatureTest::expectHeardTimes(const std::string& event, int times, const std::string& result) {
  SCOPED_TRACE(result);
  log.clear();
  deliver(zephMsg("ping {}"));
  EXPECT_EQ(g_list_length(instance.listeners), 1U) << "nothing of its own was heard";
  deliver(zephMsg(event));
  deliver(zephMsg(event));
  EXPECT_EQ(std::ssize(logged()), times);
  EXPECT_EQ(g_list_length(instance.listeners), times == 1 ? 0U : 1U);
  instance.releaseListeners();
}

void FeatureTest::expectStaysOnlyForTrue(const std::string& event, const std::string& addListener) {
  const std::string add = called(addListener);
  run(add + "(tell)");
  expectHeardTimes(event, 2, "true");
  for (const std::string& result : kNotTrue) {
    run("result = " + result + "; " + add + "(tell)");
    expectHeardTimes(event, 1, result);
  }
  run("result = true; " + add + "(function() { throw 'no'; }); " + add + "(tell)");
  log.clear();
  deliver(zephMsg(event));
  EXPECT_EQ(logged().size(), 1U);
  EXPECT_EQ(g_list_length(instance.listeners), 1U);
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::HasSubstr(": no")));
}

void FeatureTest::expectForgets(const std::string& call, const std::string& answerText) {
  SCOPED_TRACE(call);
  becomeInteractive("granted");
  run("var reference; (function() { const kept = function() {};"
      "  reference = new WeakRef(kept); " +
      called(call) + "; })()");
  const auto request = sent();
  ASSERT_TRUE(request);
  isolate()->LowMemoryNotification();
  EXPECT_EQ(run("typeof reference.deref()"), "function");
  answer(*request, zephMsg(answerText));
  isolate()->LowMemoryNotification();
  EXPECT_EQ(run("typeof reference.deref()"), "undefined");
}

}  // namespace morvik::test
