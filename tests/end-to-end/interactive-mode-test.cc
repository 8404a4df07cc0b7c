// Interactive mode: asking for it, getting it or being refused, giving it up, and the stop notice.
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kStopNotice[] = "interactive mode stopped, autokill in 300000ms";
constexpr char kStopped[] = "interactive mode stopped, autokill";
constexpr char kDeprecated[] = "DEPRECATED Use SetInteractive";

class InteractiveModeTest : public DeviceTest {
 protected:
  // The texts behind the first one that is `beginning`, up to `end` and with it.
  std::vector<std::string> textsBetween(const std::string& beginning, const std::string& end) {
    const std::vector<std::string> texts = app.texts();
    const auto first = std::ranges::find(texts, beginning);
    const auto last = std::find(first, texts.end(), end);
    return {first, last == texts.end() ? last : last + 1};
  }
};

// --- morvik.start

TEST_F(InteractiveModeTest, startChecksItsArgumentsBeforeTheConnection) {
  expectThrown({"morvik.start()", "morvik.start(1)", "morvik.start('f')", "morvik.start({})",
                "morvik.start({}, log)", "morvik.start(log, 1)", "morvik.start(log, 'text')",
                "morvik.start(log, null)", "morvik.start(log, undefined)",
                "morvik.start(log, 1, 'id')", "morvik.start(log, {}, 'id', 4)"},
               "string: Wrong arguments");
  expectThrown({"morvik.start(log)", "morvik.start(log, {})", "morvik.start(log, [])",
                "morvik.start(log, log)", "morvik.start(log, {}, 'id')"},
               "string: Connect first");
}

TEST_F(InteractiveModeTest, startSendsNothingThatIsNotItsOwn) {
  connect("morvik.start(log, {});");
  const zeph::ZephMsg start = device.receive();
  zeph::ZephMsg expected;
  expected.set_id(start.id());
  expected.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  expected.mutable_interactivemode()->set_interactiveid(start.interactivemode().interactiveid());
  EXPECT_EQ(start.DebugString(), expected.DebugString());
  EXPECT_THAT(start.interactivemode().interactiveid(), MatchesRegex(kUuid));
  EXPECT_NE(start.interactivemode().interactiveid(), start.id());
}

TEST_F(InteractiveModeTest, startIsToldStepByStep) {
  connect("log(typeof morvik.start(log, {}));");
  EXPECT_EQ(app.logged(), "undefined");
  const zeph::ZephMsg start = device.receive();
  EXPECT_THAT(
      textsBetween("starting interactiveMode", "JSLOG: undefined"),
      ElementsAre("starting interactiveMode", "check arguments", "MorvikData: %p",
                  "starting interactiveMode: %id", "function pointer: %p",
                  withoutAddresses("Sending MSG\n" + start.DebugString()), "JSLOG: undefined"));
  const std::string id = start.interactivemode().interactiveid();
  EXPECT_EQ(app.waitForLog("starting interactiveMode").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("check arguments").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLogThatStarts("MorvikData: 0x").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("starting interactiveMode: " + id).priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLogThatStarts("function pointer: 0x").priority, LOG_DEBUG);
}

TEST_F(InteractiveModeTest, aRefusedStartIsToldUpToItsRefusal) {
  app =
      run("caught(function() { morvik.start(); }); log('arguments');"
          "caught(function() { morvik.start(log, {}); }); log('connection');");
  EXPECT_THAT(app.logged(2), ElementsAre("arguments", "connection"));
  EXPECT_THAT(textsBetween("starting interactiveMode", "JSLOG: connection"),
              ElementsAre("starting interactiveMode", "check arguments", "JSLOG: arguments",
                          "starting interactiveMode", "check arguments", "MorvikData: %p",
                          "JSLOG: connection"));
}

TEST_F(InteractiveModeTest, theFunctionAloneGetsAFreshIdAndNoArgument) {
  connect(
      "morvik.start(function granted() {"
      " log(this === granted); log(arguments.length); morvik.led.light('x'); });");
  const zeph::ZephMsg start = device.receive();
  EXPECT_THAT(start.interactivemode().interactiveid(), MatchesRegex(kUuid));
  device.grant(start);
  EXPECT_THAT(app.logged(2), ElementsAre("true", "0"));
  EXPECT_EQ(device.receive().interactiveid(), start.interactivemode().interactiveid());
}

TEST_F(InteractiveModeTest, theObjectComesBackAsTheOnlyArgument) {
  connect(
      "var mine = {}; morvik.start(function granted(o) {"
      " log(this === granted); log(arguments.length); log(o === mine); }, mine);");
  device.grant(device.receive());
  EXPECT_THAT(app.logged(3), ElementsAre("true", "1", "true"));
  EXPECT_THAT(app.warnings(), Not(Contains(kDeprecated)));
}

TEST_F(InteractiveModeTest, anIdMayStillBeGivenWithAWarning) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"'my id'", "my id"},
      {"42", "42"},
      {"undefined", "undefined"},
      {"''", ""},
      {"{toString: function() { return 'made'; }}", "made"}};
  for (const auto& [argument, id] : rows) {
    SCOPED_TRACE(argument);
    startHost();
    connect("morvik.start(function() { morvik.led.light('x'); }, {}, " + argument + ");");
    const zeph::ZephMsg start = device.receive();
    EXPECT_EQ(start.interactivemode().interactiveid(), id);
    EXPECT_EQ(app.waitForLog(kDeprecated).priority, LOG_WARNING);
    device.grant(start);
    EXPECT_EQ(device.receive().interactiveid(), id);
  }
}

TEST_F(InteractiveModeTest, anIdThatCannotBeTextPassesItsExceptionOnAndSendsNothing) {
  connect(
      "log(caught(function() { morvik.start(log, {}, {toString: function() { throw 'mine'; }});"
      " })); morvik.start(log, {});");
  EXPECT_EQ(app.logged(), "string: mine");
  EXPECT_THAT(device.receive().interactivemode().interactiveid(), MatchesRegex(kUuid));
}

TEST_F(InteractiveModeTest, theGrantComesOnALaterTurn) {
  connect(
      "morvik.start(function() { log('granted'); }, {});"
      "var end = Date.now() + 200; while (Date.now() < end); log('script ends');");
  device.grant(device.receive());
  EXPECT_THAT(app.logged(2), ElementsAre("script ends", "granted"));
}

TEST_F(InteractiveModeTest, theGrantIsToldStepByStep) {
  connect("morvik.start(function() { log('granted'); }, {}); ");
  device.grant(device.receive());
  app.waitForLog("clean InteractiveData");
  EXPECT_THAT(
      textsBetween("InteractiveCallback...", "clean InteractiveData"),
      ElementsAre("InteractiveCallback...", "Response...", "MorvikData: %p",
                  "calling interactiveMode function", "JSLOG: granted", "clean InteractiveData"));
  for (const char* text : {"InteractiveCallback...", "Response...",
                           "calling interactiveMode function", "clean InteractiveData"})
    EXPECT_EQ(app.waitForLog(text).priority, LOG_DEBUG) << text;
}

TEST_F(InteractiveModeTest, anEventIsNoGrant) {
  connect(
      "morvik.start(function() { log('granted'); }, {}); setTimeout(0, function() {"
      " morvik.start(function() { log('granted again'); }, {}); });");
  const zeph::ZephMsg first = device.receive();
  const zeph::ZephMsg second = device.receive();
  device.event(first, "OK");
  device.grant(first);  // too late: the record is gone
  device.grant(second);
  EXPECT_EQ(app.logged(), "granted again");
}

TEST_F(InteractiveModeTest, aReplyWithoutACodeMeansThatTheFunctionIsNeverCalled) {
  connect(
      "morvik.start(function() { log('granted'); }, {});"
      "morvik.start(function() { log('granted again');"
      " log(caught(function() { morvik.stop(); })); }, {});");
  const zeph::ZephMsg first = device.receive();
  const zeph::ZephMsg second = device.receive();
  zeph::ZephMsg reply = replyTo(first);
  reply.mutable_response()->set_description("no code");
  device.send(reply);
  app.waitForLog("clean InteractiveData");
  device.grant(first);
  device.grant(second);
  EXPECT_THAT(app.logged(2), ElementsAre("granted again", "nothing"));
}

TEST_F(InteractiveModeTest, aReplyWithoutAResponseLeavesTheApplicationNotInteractive) {
  connect(
      "morvik.start(function() { log('granted'); }, {}); var ask = setTimeout(10, function() {"
      " log(caught(function() { morvik.stop(); })); return true; });");
  device.send(replyTo(device.receive()));
  app.waitForLog("clean InteractiveData");
  EXPECT_THAT(app.logged(2), ElementsAre("string: Must be in interactive mode",
                                         "string: Must be in interactive mode"));
}

TEST_F(InteractiveModeTest, aSecondGrantOfOneRequestDoesNothing) {
  connect("morvik.start(function() { log('granted'); ping(log); }, {});");
  const zeph::ZephMsg start = device.receive();
  device.grant(start);
  const zeph::ZephMsg ping = device.receive();
  device.grant(start);
  device.reply(start, "ERROR");
  device.reply(ping, "OK");
  EXPECT_THAT(app.logged(2), ElementsAre("granted", "OK"));
}

TEST_F(InteractiveModeTest, aSecondStartReplacesTheIdWhenItIsGranted) {
  interactive(
      "morvik.start(function() { morvik.led.light('after'); }, {});"
      " morvik.led.light('before');");
  const zeph::ZephMsg start = device.receive();
  EXPECT_FALSE(start.has_interactiveid());
  EXPECT_NE(start.interactivemode().interactiveid(), interactiveId);
  EXPECT_EQ(device.receive().interactiveid(), interactiveId);
  device.grant(start);
  EXPECT_EQ(device.receive().interactiveid(), start.interactivemode().interactiveid());
}

// --- refusal

class RefusedStartTest : public InteractiveModeTest,
                         public testing::WithParamInterface<std::string> {};

// Fatal, and told at the debug level only: odd on purpose.
TEST_P(RefusedStartTest, endsTheApplicationWithStatusOne) {
  connect("morvik.start(function() { log('never'); }, {});");
  const zeph::ZephMsg start = device.receive();
  EXPECT_EQ(endOf(app, [&] { device.reply(start, GetParam()); }), exited(1));
  const LogRecord last = app.waitForLog("Interactive mode is not valid: EXIT !");
  EXPECT_EQ(last.priority, LOG_DEBUG);
  EXPECT_THAT(textsBetween("InteractiveCallback...", ""),
              ElementsAre("InteractiveCallback...", "Response...",
                          "Interactive mode is not valid: EXIT !"));
}

INSTANTIATE_TEST_SUITE_P(WithCode, RefusedStartTest,
                         testing::ValuesIn(kCodes.begin() + 1, kCodes.end()),
                         [](const auto& row) { return row.param; });

// --- morvik.stop

TEST_F(InteractiveModeTest, stopChecksItsArgumentsBeforeTheMode) {
  expectThrown({"morvik.stop(1)", "morvik.stop(undefined)", "morvik.stop(log)"},
               "string: Wrong arguments");
  expectThrown({"morvik.stop()"}, "string: Must be in interactive mode");
}

TEST_F(InteractiveModeTest, stopWhileAStartIsPendingIsRefused) {
  connect("morvik.start(log, {}); log(caught(function() { morvik.stop(); }));");
  EXPECT_EQ(app.logged(), "string: Must be in interactive mode");
}

TEST_F(InteractiveModeTest, stopSendsTheIdOnTheEnvelopeAndChangesNothing) {
  interactive("log(typeof morvik.stop()); morvik.led.light('still'); morvik.stop();");
  expectRequest("interactiveMode { action: STOP }");
  EXPECT_EQ(app.logged(), "undefined");
  EXPECT_EQ(device.receive().led().light().color(), "still");
  EXPECT_EQ(device.receive().interactivemode().action(), zeph::InteractiveMode::STOP);
  EXPECT_EQ(app.waitForLog("stop interactiveMode").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("stop interactiveMode: " + interactiveId).priority, LOG_DEBUG);
}

// --- the stop notice

class StopNoticeTest : public InteractiveModeTest {
 protected:
  StopNoticeTest() { startHost({.shortTimersFrom = 300000}); }
};

TEST_F(StopNoticeTest, endsTheApplicationWithStatusZeroAfterFiveMinutes) {
  interactive("log('granted');");
  EXPECT_EQ(app.logged(), "granted");
  EXPECT_EQ(endOf(app, [&] { device.send(stopNotice()); }), exited(0));
  EXPECT_EQ(app.waitForLog(kStopNotice).priority, LOG_WARNING);
  EXPECT_EQ(app.waitForLog(kStopped).priority, LOG_WARNING);
  EXPECT_EQ(app.texts().back(), kStopped);
  EXPECT_THAT(host().errors().soFar(), testing::HasSubstr("short-timers: 300000\n"));
}

TEST_F(StopNoticeTest, holdsForAnApplicationThatIsNotInteractive) {
  connect("");
  EXPECT_EQ(endOf(app, [&] { device.send(stopNotice()); }), exited(0));
  EXPECT_EQ(app.texts().back(), kStopped);
}

TEST_F(StopNoticeTest, leavesTheScriptItsDeviceMeanwhileAndALaterStartSavesNothing) {
  interactive("setTimeout(50, function() { morvik.led.light('x'); return true; });");
  device.send(stopNotice());
  app.waitForLog(kStopNotice);
  EXPECT_EQ(receiveAndReply().interactiveid(), interactiveId);
  EXPECT_EQ(receiveAndReply().interactiveid(), interactiveId);
  EXPECT_EQ(receiveAndReply().interactiveid(), interactiveId);
}

TEST_F(StopNoticeTest, isNotCalledOffByAnotherGrant) {
  interactive(
      "ping(function() { morvik.stop(); morvik.start(function() { log('again'); }, {}); });");
  const zeph::ZephMsg ping = device.receive();
  device.send(stopNotice());
  device.reply(ping, "OK");
  EXPECT_EQ(device.receive().interactivemode().action(), zeph::InteractiveMode::STOP);
  device.grant(device.receive());
  EXPECT_EQ(app.logged(), "again");
  EXPECT_EQ(endOf(app, [] {}), exited(0));
  EXPECT_EQ(app.texts().back(), kStopped);
}

TEST_F(StopNoticeTest, armsATimerEachTimeAndTheFirstToFireEndsIt) {
  interactive("log('granted');");
  EXPECT_EQ(app.logged(), "granted");
  device.send(stopNotice());
  device.send(stopNotice());
  app.waitUntilEnded();
  EXPECT_EQ(std::ranges::count(app.texts(), kStopNotice), 2);
  EXPECT_EQ(std::ranges::count(app.texts(), kStopped), 1);
  host().killAll();
  const std::string armed = "short-timers: 300000\n";
  const std::string errors = host().errors().awaitEnd();
  const std::size_t first = errors.find(armed);
  ASSERT_NE(first, std::string::npos);
  EXPECT_NE(errors.find(armed, first + 1), std::string::npos);
}

TEST_F(StopNoticeTest, isOnlyWhatHasTheActionToStop) {
  interactive("ping(log);");
  const zeph::ZephMsg ping = device.receive();
  zeph::ZephMsg without = newMessage();
  without.mutable_interactivemode()->set_interactiveid(interactiveId);
  device.send(without);
  zeph::ZephMsg start = newMessage();
  start.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  device.send(start);
  device.reply(ping, "OK");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_THAT(app.warnings(), ElementsAre(kNoParams));
}

TEST_F(StopNoticeTest, withACorrelationIdReachesItsFunctionFirst) {
  connect("morvik.start(function() { log('granted'); }, {});");
  zeph::ZephMsg grant = responseTo(device.receive(), "OK");
  grant.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  device.send(grant);
  app.waitForLog(kStopNotice);
  EXPECT_THAT(textsBetween("calling interactiveMode function", kStopNotice),
              ElementsAre("calling interactiveMode function", "JSLOG: granted",
                          "clean InteractiveData", kStopNotice));
}

}  // namespace
}  // namespace morvik::test
