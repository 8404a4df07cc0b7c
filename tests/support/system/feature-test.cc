// Runs the rows of features on the real program.
#include "support/system/feature-test.h"

#include <algorithm>

#include "features/features.h"
#include "features/prelude.h"
#include "support/text-message.h"

namespace morvik::test {
namespace {

// Tells what a call gave or how it threw, behind a line that marks its beginning. The log has one
// byte for each unit of a text, so that a thrown text has to be UTF-8 to be one there.
constexpr char kGlobals[] = R"(
  var step = function(call) {
    log('step');
    var result;
    try { result = String(call()); } catch (e) { result = 'throws ' + typeof e + ' ' + unescape(encodeURIComponent(e)); }
    log(result);
  };
)";

constexpr std::string_view kStep = "JSLOG: step";
constexpr std::string_view kEnd = "JSLOG: end";
constexpr std::string_view kReceived = "Received MSG\n";

// What the channel writes about every message and every listener.
bool isChannels(std::string_view text) {
  constexpr std::string_view kPrefixes[] = {"Sending MSG\n",      kReceived,
                                            "message received",   "zephmsg callback handler",
                                            "callback data: ",    "function pointer: ",
                                            "adding listener : ", "calling listener : ",
                                            "response: "};
  return std::ranges::any_of(kPrefixes,
                             [&](std::string_view prefix) { return text.starts_with(prefix); });
}

std::string levelled(const LogRecord& record) {
  switch (record.priority) {
    case LOG_WARNING:
      return "WARNING " + record.text;
    case LOG_NOTICE:
      return "MESSAGE " + record.text;
    default:
      return "DEBUG " + record.text;
  }
}

Lines endingWith(Lines lines, const std::string& result) {
  lines.push_back("MESSAGE JSLOG: " + result);
  return lines;
}

// One expression as a step of a script.
std::string step(const std::string& call) { return "step(function() { return " + call + "; });\n"; }

}  // namespace

std::string FeatureTest::withGlobals(const std::string& script) {
  return std::string(kPrelude) + kGlobals + script;
}

std::string FeatureTest::scriptOf(const std::vector<Step>& steps) {
  std::string script;
  for (const Step& each : steps) script += step(each.call);
  return script + "log('end');";
}

std::string FeatureTest::called(const std::string& call) const {
  return "morvik." + feature_ + "." + call;
}

std::vector<Lines> FeatureTest::groups(std::string_view beginning, std::string_view end) const {
  std::vector<Lines> groups;
  for (const LogRecord& record : app.records()) {
    if (record.text == end) break;
    if (record.text.starts_with(beginning)) groups.emplace_back();
    const bool marks = record.text.starts_with(beginning) || isChannels(record.text);
    if (!marks && !groups.empty()) groups.back().push_back(levelled(record));
  }
  return groups;
}

std::vector<Lines> FeatureTest::stepsTillEnd() const {
  app.waitForLog(std::string(kEnd));
  return groups(kStep, kEnd);
}

// A message is received only when those before it are handled.
void FeatureTest::settle() {
  const zeph::ZephMsg last = newMessage();
  device.send(last);
  app.waitForLog(std::string(kReceived) + last.DebugString());
}

std::vector<Lines> FeatureTest::receptions() const { return groups(kReceived, {}); }

void FeatureTest::expectFunctions(const std::string& names) {
  std::vector<std::string> others = accessNames();
  std::erase(others, feature_);
  const std::string object = "morvik." + feature_;
  expectLogged({{"typeof " + object, "undefined"}}, others);
  expectLogged({{"Object.keys(" + object + ").join()", names},
                {"Object.keys(" + object + ").filter(function(name) { return typeof " + object +
                     "[name] != 'function'; }).length",
                 "0"}},
               {feature_});
}

void FeatureTest::expectSends(const std::vector<SentRow>& rows) {
  ASSERT_FALSE(rows.empty());
  std::string script;
  for (const SentRow& row : rows) script += step(called(row.call));
  interactive(withGlobals(script + "log('end'); ping();"), access());
  for (const SentRow& row : rows) {
    SCOPED_TRACE(row.call);
    if (!row.payload.empty()) expectRequest(row.payload);
  }
  EXPECT_TRUE(device.receive().has_ping()) << "something more was sent";
  const std::vector<Lines> steps = stepsTillEnd();
  ASSERT_EQ(steps.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(steps[i], endingWith(rows[i].lines, "undefined")) << rows[i].call;
}

std::string FeatureTest::refusals(const std::vector<RefusedRow>& rows,
                                  std::string RefusedRow::*text) const {
  std::string script;
  for (const RefusedRow& row : rows)
    if (!(row.*text).empty()) script += step(called(row.call));
  return script;
}

void FeatureTest::expectRefuses(const std::vector<RefusedRow>& rows) {
  ASSERT_FALSE(rows.empty());
  connect(
      withGlobals(refusals(rows, &RefusedRow::outside) + "log('step'); morvik.start(function() {" +
                  refusals(rows, &RefusedRow::inside) + "log('end'); ping(); }, {});"),
      access());
  const zeph::ZephMsg start = device.receive();
  EXPECT_TRUE(start.has_interactivemode()) << "something was sent before";
  device.grant(start);
  EXPECT_TRUE(device.receive().has_ping()) << "something was sent before";
  std::vector<Lines> expected;
  const auto expect = [&](std::string RefusedRow::*text) {
    for (const RefusedRow& row : rows)
      if (!(row.*text).empty())
        expected.push_back(endingWith(row.lines, "throws string " + row.*text));
  };
  expect(&RefusedRow::outside);
  const auto insideFrom = std::ssize(expected);
  expect(&RefusedRow::inside);
  std::vector<Lines> steps = stepsTillEnd();
  ASSERT_EQ(steps.size(), expected.size() + 1);
  steps.erase(steps.begin() + insideFrom);  // the beginning of interactive mode
  for (std::size_t i = 0; i < steps.size(); ++i) EXPECT_EQ(steps[i], expected[i]) << "step " << i;
}

void FeatureTest::expectReads(const std::vector<ReadRow>& rows) {
  ASSERT_FALSE(rows.empty());
  std::string script;
  for (const ReadRow& row : rows)
    script += "order = ''; step(function() { " + called(row.call) + "; return order; });";
  interactive(withGlobals(script + "log('end');"), access());
  const std::vector<Lines> steps = stepsTillEnd();
  ASSERT_EQ(steps.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(steps[i].back(), "MESSAGE JSLOG: " + rows[i].order) << rows[i].call;
  for (std::size_t i = 0; i < rows.size(); ++i) device.receive();
}

void FeatureTest::expectReceptions(const std::vector<Lines>& expected) {
  settle();
  std::vector<Lines> heard = receptions();
  ASSERT_GT(heard.size(), expected.size());
  heard.pop_back();  // the message that settled
  heard.erase(heard.begin(), heard.end() - std::ssize(expected));
  for (std::size_t i = 0; i < heard.size(); ++i) EXPECT_EQ(heard[i], expected[i]) << "row " << i;
}

void FeatureTest::deliver(const std::string& payload) {
  zeph::ZephMsg message = newMessage();
  message.MergeFrom(zephMsg(payload));
  device.send(message);
}

void FeatureTest::answer(const zeph::ZephMsg& request, const std::string& payload) {
  zeph::ZephMsg message = replyTo(request);
  message.MergeFrom(zephMsg(payload));
  device.send(message);
}

void FeatureTest::expectAnswered(const std::vector<AnsweredRow>& rows) {
  ASSERT_FALSE(rows.empty());
  std::string script;
  for (const AnsweredRow& row : rows)
    if (!row.call.empty()) script += called(row.call) + ";\n";
  interactive(withGlobals(script), access());
  zeph::ZephMsg request;
  std::vector<Lines> expected;
  for (const AnsweredRow& row : rows) {
    if (!row.call.empty()) request = device.receive();
    answer(request, row.answer);
    expected.push_back(row.lines);
  }
  expectReceptions(expected);
}

void FeatureTest::expectHears(const std::vector<HeardRow>& rows) {
  ASSERT_FALSE(rows.empty());
  connect(withGlobals(called("addListener(tell);")), access());
  std::vector<Lines> expected;
  for (const HeardRow& row : rows) {
    deliver(row.message);
    expected.push_back(row.lines);
  }
  expectReceptions(expected);
}

void FeatureTest::expectStaysOnlyForTrue(const std::string& event) {
  const auto listener = [this](const std::string& name, const std::string& end) {
    return called("addListener(function() { log(\"" + name + "\"); " + end + "; });\n");
  };
  std::string script = listener("true", "return true");
  for (const std::string& value : kNotTrue) script += listener(value, "return " + value);
  connect(script + listener("throws", "throw 'no'") + listener("last", "return true"), access());
  deliver(event);
  std::vector<std::string> heard = std::vector<std::string>{"true"} + kNotTrue;
  for (const std::string& text : heard + std::vector<std::string>{"throws", "last"})
    EXPECT_EQ(app.logged(), text);
  deliver(event);
  for (const std::string text : {"true", "last"}) EXPECT_EQ(app.logged(), text);
  EXPECT_THAT(app.warnings(), testing::Contains(testing::EndsWith(": no")));
}

}  // namespace morvik::test
