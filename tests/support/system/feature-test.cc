#include "support/system/feature-test.h"

#include <google/protobuf/text_format.h>

#include <algorithm>
#include <stdexcept>

namespace morvik::test {
namespace {

const std::vector<std::string> kAccesses{"led",        "ears",   "tts",  "webcam", "asr",
                                         "multimedia", "button", "rfid", "m2m",    "message",
                                         "contact",    "serial", "dock", "http"};

constexpr char kGlobals[] = R"(
  var f = function() {};
  var bad = {toString: function() { throw 'no text'; }};
  var tell = function() {
    var shown = Array.from(arguments, function(a) {
        return typeof a + ' ' + (typeof a === 'object' ? JSON.stringify(a) : a); });
    log(shown.join(', ') + (this === tell ? '' : ' with another this'));
    return true;
  };
  var step = function(call) {
    log('step');
    var result;
    try { result = String(call()); } catch (e) { result = 'throws ' + typeof e + ' ' + e; }
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

std::vector<RefusedRow> rowsOf(const std::vector<std::string>& calls, const RefusedRow& shape) {
  std::vector<RefusedRow> rows(calls.size(), shape);
  for (std::size_t i = 0; i < calls.size(); ++i) rows[i].call = calls[i];
  return rows;
}

}  // namespace

zeph::ZephMsg messageOf(const std::string& text) {
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  zeph::ZephMsg message;
  if (!parser.ParseFromString(text, &message)) throw std::runtime_error("not a message: " + text);
  return message;
}

std::vector<RefusedRow> wrong(const std::vector<std::string>& calls) { return rowsOf(calls, {}); }

std::vector<RefusedRow> needMode(const std::vector<std::string>& calls) {
  return rowsOf(calls, {.call = {}, .outside = kMode, .inside = {}});
}

std::vector<RefusedRow> operator+(std::vector<RefusedRow> rows,
                                  const std::vector<RefusedRow>& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

std::string FeatureTest::withGlobals(const std::string& script) { return kGlobals + script; }

std::string FeatureTest::step(const std::string& call) {
  return "step(function() { return " + call + "; });\n";
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
  std::vector<std::string> others = kAccesses;
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
  std::string script;
  for (const SentRow& row : rows) script += step(called(row.call));
  interactive(withGlobals(script + "log('end'); ping();"), access());
  for (const SentRow& row : rows) {
    if (row.payload.empty()) continue;
    zeph::ZephMsg sent = device.receive();
    EXPECT_THAT(sent.id(), testing::MatchesRegex(kUuid));
    sent.clear_id();
    EXPECT_EQ(sent.ShortDebugString(), "interactiveId: \"" + interactiveId + "\" " + row.payload)
        << row.call;
  }
  EXPECT_TRUE(device.receive().has_ping()) << "something more was sent";
  const std::vector<Lines> steps = stepsTillEnd();
  ASSERT_EQ(steps.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(steps[i], endingWith(rows[i].lines, "undefined")) << rows[i].call;
}

std::string FeatureTest::refusals(const std::vector<RefusedRow>& rows, bool inside) const {
  std::string script;
  for (const RefusedRow& row : rows)
    if (!inside || !row.inside.empty()) script += step(called(row.call));
  return script;
}

void FeatureTest::expectRefuses(const std::vector<RefusedRow>& rows) {
  connect(withGlobals(refusals(rows, false) + "log('inside'); morvik.start(function() {" +
                      refusals(rows, true) + "log('end'); ping(); }, {});"),
          access());
  const zeph::ZephMsg start = device.receive();
  EXPECT_TRUE(start.has_interactivemode()) << "something was sent before";
  device.grant(start);
  EXPECT_TRUE(device.receive().has_ping()) << "something was sent before";
  std::vector<Lines> expected;
  const auto expect = [&](const RefusedRow& row, const std::string& text) {
    expected.push_back(endingWith(row.lines, "throws string " + text));
  };
  for (const RefusedRow& row : rows) expect(row, row.outside);
  const std::size_t outside = expected.size();
  for (const RefusedRow& row : rows)
    if (!row.inside.empty()) expect(row, row.inside);
  std::vector<Lines> steps = stepsTillEnd();
  ASSERT_EQ(steps.size(), expected.size());
  steps[outside - 1].resize(expected[outside - 1].size());  // behind it interactive mode begins
  EXPECT_EQ(steps, expected);
}

void FeatureTest::expectReceptions(const std::vector<Lines>& expected) {
  settle();
  std::vector<Lines> heard = receptions();
  ASSERT_GT(heard.size(), expected.size());
  heard.pop_back();  // the message that settled
  heard.erase(heard.begin(), heard.end() - std::ssize(expected));
  for (std::size_t i = 0; i < heard.size(); ++i) EXPECT_EQ(heard[i], expected[i]) << "row " << i;
}

void FeatureTest::expectAnswered(const std::vector<AnsweredRow>& rows) {
  std::string script;
  for (const AnsweredRow& row : rows)
    if (!row.call.empty()) script += called(row.call) + ";\n";
  interactive(withGlobals(script), access());
  zeph::ZephMsg request;
  std::vector<Lines> expected;
  for (const AnsweredRow& row : rows) {
    if (!row.call.empty()) request = device.receive();
    zeph::ZephMsg answer = replyTo(request);
    answer.MergeFrom(messageOf(row.answer));
    device.send(answer);
    expected.push_back(row.lines);
  }
  expectReceptions(expected);
}

void FeatureTest::expectHears(const std::vector<HeardRow>& rows) {
  connect(withGlobals(called("addListener(tell);")), access());
  std::vector<Lines> expected;
  for (const HeardRow& row : rows) {
    zeph::ZephMsg message = newMessage();
    message.MergeFrom(messageOf(row.message));
    device.send(message);
    expected.push_back(row.lines);
  }
  expectReceptions(expected);
}

void FeatureTest::expectStaysOnlyForTrue(const std::string& event) {
  const std::vector<std::string> values{"true", "false",  "undefined",
                                        "1",    "'true'", "new Boolean(true)"};
  const auto listener = [this](const std::string& name, const std::string& end) {
    return called("addListener(function() { log(\"" + name + "\"); " + end + "; });\n");
  };
  std::string script;
  for (const std::string& value : values) script += listener(value, "return " + value);
  connect(script + listener("throws", "throw 'no'") + listener("last", "return true"), access());
  zeph::ZephMsg message = newMessage();
  message.MergeFrom(messageOf(event));
  device.send(message);
  for (const std::string& value : values) EXPECT_EQ(app.logged(), value);
  EXPECT_EQ(app.logged(), "throws");
  EXPECT_EQ(app.logged(), "last");
  device.send(message);
  EXPECT_EQ(app.logged(), "true");
  EXPECT_EQ(app.logged(), "last");
  EXPECT_THAT(app.warnings(), testing::Contains(testing::EndsWith(": no")));
}

}  // namespace morvik::test
