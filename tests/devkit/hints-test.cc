// What is told of living applications: from lines alone, and on the real host.
#include "run/hints.h"

#include "fake-server.h"
#include "launched.h"
#include "run/access-names.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

ExceptionReport reportOf(const std::string& text, const std::string& sourceLine = "",
                         std::size_t column = 0) {
  ExceptionReport report;
  report.file = "main.js";
  report.line = 12;
  report.text = text;
  report.sourceLine = sourceLine;
  report.column = column;
  return report;
}

constexpr char kUndefined[] = "TypeError: Cannot read properties of undefined (reading 'light')";

TEST(MissingAccess, isReadFromTheSourceBeforeTheMark) {
  const struct {
    std::string before;
    std::string access;
  } rows[] = {
      {"morvik.led.", "led"},
      {"  if (a) morvik . dock .", "dock"},
      {"morvik['led'].", "led"},
      {"morvik.led[", "led"},
      {"morvik.led['", "led"},
      {"social.twitter.", "twitter"},
      {"var led = morvik.led; led.", "led"},
      {"morvik.wings.", ""},
      {"params.led.", ""},
      {"find().led.", ""},
      {"social.", ""},
      {"config.", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    const auto missing =
        missingAccess(reportOf(kUndefined, row.before + "light('red');", row.before.size()));
    EXPECT_EQ(missing ? missing->access : "", row.access) << row.before;
  }
}

TEST(MissingAccess, isReadFromTheText) {
  EXPECT_EQ(missingAccess(reportOf("ReferenceError: http is not defined"))->object, "http");
  EXPECT_EQ(missingAccess(reportOf("TypeError: Cannot destructure property 'light' of "
                                   "'morvik.led' as it is undefined."))
                ->object,
            "morvik.led");
  EXPECT_FALSE(missingAccess(reportOf("ReferenceError: https is not defined")));
  EXPECT_FALSE(missingAccess(
      reportOf("TypeError: Cannot read properties of null (reading 'x')", "morvik.led.x", 11)));
  EXPECT_EQ(misplacedObject(reportOf("ReferenceError: led is not defined")), "led");
}

class HintsTest : public ::testing::Test {
 protected:
  void hear(const std::string& record) {
    for (Hint& hint : hints_.take(lineOfStandardError(record))) heard_.push_back(hint);
  }
  void offerTo(const std::string& payload, std::initializer_list<const char*> listeners) {
    hear("DEBUG: message received");
    hear("DEBUG: Received MSG\nid: \"1\"\n" + payload + " {\n}\n");
    for (const char* listener : listeners)
      hear(std::string("DEBUG: calling listener : ") + listener);
  }
  void add(const char* listener) { hear(std::string("DEBUG: adding listener : ") + listener); }
  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const Hint& hint : heard_) texts.push_back(hint.text);
    return texts;
  }

  Hints hints_;
  std::vector<Hint> heard_;
};

constexpr char kRfidEnded[] =
    "The listener that heard rfid has ended: it stays only for as long as its function returns "
    "true.";

TEST_F(HintsTest, tellAListenerThatIsLeftOutWhileALaterOneIsNot) {
  add("[0x1]");
  add("[0x2]");
  offerTo("rfidCallback", {"[0x1]", "[0x2]"});
  EXPECT_THAT(texts(), IsEmpty());
  offerTo("buttonCallback", {"[0x2]"});
  EXPECT_THAT(texts(), ElementsAre(kRfidEnded));
}

TEST_F(HintsTest, tellTheLastListenerWithTheMessageBehindTheNext) {
  add("[0x1]");
  offerTo("rfidCallback", {"[0x1]"});
  offerTo("buttonCallback", {});
  EXPECT_THAT(texts(), IsEmpty());
  offerTo("buttonCallback", {});
  EXPECT_THAT(texts(), ElementsAre(kRfidEnded));
}

TEST_F(HintsTest, tellAListenerWhoseAddressIsGivenAgain) {
  add("[0x1]");
  offerTo("rfidCallback", {"[0x1]"});
  add("[0x1]");
  EXPECT_THAT(texts(), ElementsAre(kRfidEnded));
}

TEST_F(HintsTest, takeNoListenerForEndedThatIsNew) {
  offerTo("rfidCallback", {});
  add("[0x1]");
  offerTo("rfidCallback", {"[0x1]"});
  add("[0x2]");
  offerTo("rfidCallback", {"[0x1]", "[0x2]"});
  hear("DEBUG: message received");
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(HintsTest, takeNoListenerForEndedThatIsNotOfferedAStopNotice) {
  add("[0x1]");
  offerTo("interactiveMode", {});
  offerTo("interactiveMode", {});
  offerTo("rfidCallback", {"[0x1]"});
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(HintsTest, knowThatAMessageWithCredentialsIsNotLogged) {
  add("[0x1]");
  hear("DEBUG: message received");
  hear("DEBUG: calling listener : [0x1]");
  hear("DEBUG: message received");
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(HintsTest, areGivenOnceForEachPlace) {
  for (int i = 0; i < 3; ++i) {
    hear("WARNING: main.js:3: Must be in interactive mode");
    hear("WARNING: morvik.ping();");
    hear("WARNING:        ^");
  }
  ASSERT_THAT(heard_, SizeIs(1));
  EXPECT_EQ(heard_[0].kind, HintKind::kNotInteractive);
  EXPECT_EQ(heard_[0].place, "main.js:3");
}

TEST_F(HintsTest, hearNoReportInWhatAScriptLogs) {
  hear("MESSAGE: JSLOG: main.js:3: text");
  hear("MESSAGE: JSLOG: source");
  hear("MESSAGE: JSLOG: ^");
  EXPECT_THAT(texts(), IsEmpty());
}

struct Row {
  const char* name;
  const char* mainJs;
  HintKind kind;
  const char* text;  // a part of it
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

const Row kRows[] = {
    {"threw", "\nthrow new Error('boom');", HintKind::kThrew,
     "main.js:2 threw \"Error: boom\". The application lives on"},
    {"notGranted", "\nmorvik.led.light('red');", HintKind::kNotGranted,
     "`morvik.led` is undefined: `main.js:2`. Grant it: `<access>led</access>`"},
    {"notGrantedInAVariable", "var led = morvik.led; led.light('red');", HintKind::kNotGranted,
     "<access>led</access>"},
    {"notGrantedAndTakenApart", "var {light} = morvik.led;", HintKind::kNotGranted,
     "<access>led</access>"},
    {"httpNotGranted", "http.get('x');", HintKind::kNotGranted,
     "`http` is undefined: `main.js:1`. Grant it: `<access>http</access>`"},
    {"socialNotGranted", "social.twitter.get('x');", HintKind::kNotGranted,
     "<access>twitter</access>"},
    {"withoutMorvik", "led.light('red');", HintKind::kThrew, "write `morvik.led`"},
    {"notInteractive", "morvik.ping();", HintKind::kNotInteractive,
     "in the function that morvik.start calls"},
    {"connectFirst", "morvik.start(function() {}, {});", HintKind::kConnectFirst,
     "comes before morvik.start"},
    {"wrongArguments", "morvik.connect('127.0.0.1');", HintKind::kWrongArguments, "arguments"},
    {"arrayBuffers", "new Uint8Array(20000000);", HintKind::kArrayBuffers, "10 MiB together"},
    {"accessDenied", "file.read('../x');", HintKind::kAccessDenied, "single dots"},
    {"inATimer", "setTimeout(0, function() { throw 'late'; });", HintKind::kThrew,
     "main.js:1 threw \"late\""},
    {"listenerEnded",
     "morvik.connect('127.0.0.1', Number(instanceName)); morvik.start(function() {"
     " morvik.rfid.addListener(function() {}); morvik.ping(); }, {});",
     HintKind::kListenerEnded, "The listener that heard rfid has ended"},
};

class HintOnTheHost : public ::testing::TestWithParam<Row> {
 protected:
  HintOnTheHost() { EXPECT_TRUE(becomeReaper()); }

  static void received(FakeServer& server, const zeph::ZephMsg& message) {
    if (!message.has_ping()) return server.answer(message, zeph::OK);
    for (int i = 0; i < 3; ++i) {
      zeph::ZephMsg tag = newMessage();
      tag.mutable_rfidcallback()->set_id("04a1");
      server.send(tag);
    }
  }
};

TEST_P(HintOnTheHost, isGivenWhileTheApplicationLives) {
  const Row& row = GetParam();
  Loop loop;
  FakeServer server([](FakeServer&) {}, received);
  const Apps apps;
  apps.app("app", row.mainJs, {row.kind == HintKind::kListenerEnded ? "rfid" : "tts"});
  LaunchPlan plan = planOf(apps, {"app plain " + std::to_string(server.port())});
  LaunchRecord record;
  Launch launch(record);
  launch.start(plan);
  EXPECT_TRUE(loop.runUntil([&] { return !record.hints.empty(); })) << record.transcript();
  ASSERT_THAT(record.hints, SizeIs(1)) << record.transcript();
  EXPECT_EQ(nameOf(record.hints[0].kind), std::string(nameOf(row.kind)));
  EXPECT_EQ(record.hints[0].app, "app");
  EXPECT_THAT(record.hints[0].text, HasSubstr(row.text));
  EXPECT_THAT(record.ends, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Each, HintOnTheHost, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(ConfigHint, isGivenAtTheStart) {
  EXPECT_TRUE(becomeReaper());
  Loop loop;
  const Apps apps;
  apps.app("app", "");
  apps.file("app", "config.bin", "\xff\xff\xff");
  LaunchRecord record;
  Launch launch(record);
  launch.start(planOf(apps, {"app"}));
  EXPECT_TRUE(loop.runUntil([&] { return !record.hints.empty(); })) << record.transcript();
  EXPECT_EQ(record.hints[0].kind, HintKind::kBrokenConfig);
}

}  // namespace
}  // namespace morvik::test
