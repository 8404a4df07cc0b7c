// What a script's functions hear of the answers to ping, info and the LED.
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

// --- codes

class CodeTest : public DeviceTest {
 protected:
  // Sends the messages and then a last answer; gives what the script has heard till then.
  std::vector<std::string> heard(const zeph::ZephMsg& request,
                                 const std::vector<zeph::ZephMsg>& messages) {
    for (const zeph::ZephMsg& message : messages) device.send(message);
    zeph::ZephMsg last = eventFor(request, "SCHEDULE_EVENT");
    device.send(last);
    return app.loggedUntil("SCHEDULE_EVENT");
  }
};

TEST_F(CodeTest, comeByTheirNamesFromResponsesAndEvents) {
  interactive("morvik.led.light('x', log);");
  const zeph::ZephMsg request = device.receive();
  for (const std::string& code : kCodes) {
    device.reply(request, code);
    EXPECT_EQ(app.logged(), code);
    device.event(request, code);
    EXPECT_EQ(app.logged(), code);
  }
}

TEST_F(CodeTest, ofOneMessageComeResponseFirst) {
  interactive("morvik.led.light('x', log);");
  const zeph::ZephMsg request = device.receive();
  zeph::ZephMsg both = eventFor(request, "TERMINATED");
  both.mutable_response()->set_code(zeph::OK);
  EXPECT_THAT(heard(request, {both}), ElementsAre("OK", "TERMINATED"));
}

TEST_F(CodeTest, areMissingWhereTheMessageHasNone) {
  interactive("morvik.led.light('x', log);");
  const zeph::ZephMsg request = device.receive();
  zeph::ZephMsg noCode = replyTo(request);
  noCode.mutable_response()->set_description("described");
  noCode.mutable_event()->set_description("described");
  EXPECT_THAT(heard(request, {replyTo(request), noCode}), ElementsAre());
  const std::vector<std::string> texts = app.texts();
  EXPECT_EQ(std::ranges::count(texts, "Event: LED"), 3);
  EXPECT_EQ(std::ranges::count(texts, "calling response function"), 0);
  EXPECT_EQ(std::ranges::count(texts, "calling event function"), 1);
}

TEST_F(CodeTest, thatAreUnknownAreNoCodes) {
  interactive("morvik.led.light('x', log);");
  const zeph::ZephMsg request = device.receive();
  std::string payload = replyTo(request).SerializeAsString();
  payload += std::string("\xc2\x0c\x02\x08\x63", 5);  // a response with the code 99
  device.sendBytes(frameOf(payload));
  EXPECT_THAT(heard(request, {}), ElementsAre());
}

TEST_F(CodeTest, areToldInTheLog) {
  interactive("morvik.led.light('x', log);");
  const zeph::ZephMsg request = device.receive();
  device.reply(request, "OK");
  device.event(request, "TERMINATED");
  EXPECT_THAT(app.logged(2), ElementsAre("OK", "TERMINATED"));
  std::vector<std::string> texts;
  for (const LogRecord& record : app.records())
    if (record.text == "Event: LED" || record.text.starts_with("calling ")) {
      texts.push_back(record.text);
      EXPECT_EQ(record.priority, LOG_DEBUG);
    }
  EXPECT_THAT(texts,
              ElementsAre("calling interactiveMode function", "Event: LED",
                          "calling response function", "Event: LED", "calling event function"));
}

TEST_F(CodeTest, areTheOnlyArgumentOfTheFunctionWhichIsItsOwnReceiver) {
  interactive(
      "morvik.led.light('x', function heard(code) {"
      " log([this === heard, arguments.length, typeof code].join()); return false; });");
  const zeph::ZephMsg request = receiveAndReply();
  EXPECT_EQ(app.logged(), "true,1,string");
  device.event(request, "TERMINATED");
  EXPECT_EQ(app.logged(), "true,1,string");
}

TEST_F(CodeTest, comeAlsoAfterTheFunctionHasThrown) {
  interactive("morvik.led.light('x', function(code) { log(code); throw code; });");
  const zeph::ZephMsg request = device.receive();
  zeph::ZephMsg both = eventFor(request, "TERMINATED");
  both.mutable_response()->set_code(zeph::OK);
  EXPECT_THAT(heard(request, {both}), ElementsAre("OK", "TERMINATED"));
}

TEST_F(CodeTest, neverComeWhenTheServerKeepsSilent) {
  interactive("morvik.led.light('x', log); ping(log);");
  device.receive();
  receiveAndReply("BUSY");
  EXPECT_EQ(app.logged(), "BUSY");
}

// --- ping

class PingTest : public DeviceTest {};

TEST_F(PingTest, checksItsArgumentsBeforeTheMode) {
  std::vector<std::string> wrong;
  std::vector<std::string> right;
  for (const std::string name : {"ping", "morvik.ping"}) {
    for (const std::string arguments : {"1", "'f'", "{}", "undefined", "log, log", "1, log"})
      wrong.push_back(name + "(" + arguments + ")");
    for (const std::string arguments : {"", "log"}) right.push_back(name + "(" + arguments + ")");
  }
  expectThrown(wrong, "string: Wrong arguments");
  expectThrown(right, "string: Must be in interactive mode");
}

TEST_F(PingTest, sendsAnEmptyPingUnderEitherName) {
  interactive("log(typeof ping()); log(typeof morvik.ping()); ping(log);");
  EXPECT_THAT(app.logged(2), ElementsAre("undefined", "undefined"));
  expectRequest("ping { }");
  expectRequest("ping { }");
  EXPECT_TRUE(receiveAndReply("OK").has_ping());
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(app.waitForLog("PingFunction").priority, LOG_NOTICE);
  EXPECT_EQ(app.waitForLog("Event: PingFunction").priority, LOG_DEBUG);
}

// --- info

class InfoTest : public DeviceTest {
 protected:
  zeph::ZephMsg informed(const std::vector<std::pair<std::string, std::string>>& infos) {
    zeph::ZephMsg reply = replyTo(request);
    zeph::MorvikInfoResponse* response = reply.mutable_morvikinfo_response();
    for (const auto& [key, value] : infos) {
      zeph::KeyValue* info = response->add_infos();
      info->set_key(key);
      info->set_value(value);
    }
    return reply;
  }
  void ask(std::string_view function) {
    interactive("morvik.info(" + std::string(function) + "); ping(log);");
    request = device.receive();
    ping = device.receive();
  }
  zeph::ZephMsg request;
  zeph::ZephMsg ping;
};

constexpr char kTell[] = "function(info) { log(JSON.stringify(info)); }";

TEST_F(InfoTest, checksItsArgumentsBeforeTheMode) {
  expectThrown({"morvik.info()", "morvik.info(1)", "morvik.info({})", "morvik.info(log, log)",
                "morvik.info(log, 1)"},
               "string: Wrong arguments");
  expectThrown({"morvik.info(log)"}, "string: Must be in interactive mode");
}

TEST_F(InfoTest, logsTheCallBeforeTheModeIsTested) {
  App refused =
      run("caught(function() { morvik.info(); }); log('arguments');"
          "caught(function() { morvik.info(log); }); log('mode');");
  EXPECT_THAT(refused.logged(2), ElementsAre("arguments", "mode"));
  const std::vector<std::string> texts = refused.texts();
  EXPECT_THAT(std::vector(texts.end() - 3, texts.end()),
              ElementsAre("JSLOG: arguments", "ConfigMorvikGet", "JSLOG: mode"));
  EXPECT_EQ(refused.waitForLog("ConfigMorvikGet").priority, LOG_NOTICE);
}

TEST_F(InfoTest, sendsAnEmptyQuery) {
  interactive("log(typeof morvik.info(log));");
  expectRequest("morvikinfo_query { }");
  EXPECT_EQ(app.logged(), "undefined");
}

TEST_F(InfoTest, givesTheScriptOneObjectOfTexts) {
  ask("function told(info) { log([this === told, arguments.length].join());"
      " log(JSON.stringify(info)); }");
  device.send(informed({{"name", "Bob"}, {"volume", "12"}, {"name", "Alice"}, {"", ""}}));
  EXPECT_THAT(app.logged(2), ElementsAre("true,1", R"({"name":"Alice","volume":"12","":""})"));
}

TEST_F(InfoTest, isToldInTheLog) {
  ask(kTell);
  device.send(informed({{"a", "1"}, {"b", "2"}}));
  EXPECT_EQ(app.logged(), R"({"a":"1","b":"2"})");
  const std::vector<LogRecord> records = app.records();
  const auto first = std::ranges::find(records, "InfoMorvikCallbackFunction", &LogRecord::text);
  std::vector<std::pair<std::string, int>> told;
  for (auto record = first; record != records.end(); ++record)
    told.emplace_back(record->text, record->priority);
  EXPECT_THAT(
      told, ElementsAre(std::pair("InfoMorvikCallbackFunction", LOG_NOTICE),
                        std::pair("InfoMorvikCallbackFunction has_morvikinfo size : 2", LOG_DEBUG),
                        std::pair("morvikinfo key : a", LOG_DEBUG),
                        std::pair("morvikinfo value : 1", LOG_DEBUG),
                        std::pair("morvikinfo key : b", LOG_DEBUG),
                        std::pair("morvikinfo value : 2", LOG_DEBUG),
                        std::pair(R"(JSLOG: {"a":"1","b":"2"})", LOG_NOTICE)));
}

TEST_F(InfoTest, withNothingIsAnEmptyObject) {
  ask(kTell);
  device.send(informed({}));
  EXPECT_EQ(app.logged(), "{}");
  app.waitForLog("InfoMorvikCallbackFunction has_morvikinfo size : 0");
}

TEST_F(InfoTest, waitsOnThroughRepliesWithoutIt) {
  ask(kTell);
  device.reply(request, "OK");
  const std::string missing = "InfoMorvikCallbackFunction: has_morvikinfo_response false";
  EXPECT_EQ(app.waitForLog(missing).priority, LOG_NOTICE);
  device.reply(ping, "BUSY");
  EXPECT_EQ(app.logged(), "BUSY");
  device.send(informed({{"a", "1"}}));
  EXPECT_EQ(app.logged(), R"({"a":"1"})");
}

TEST_F(InfoTest, comesOnce) {
  ask(kTell);
  device.send(informed({{"a", "1"}}));
  device.send(informed({{"a", "2"}}));
  device.reply(request, "OK");
  device.reply(ping, "OK");
  EXPECT_THAT(app.logged(2), ElementsAre(R"({"a":"1"})", "OK"));
}

TEST_F(InfoTest, mayBeAskedSeveralTimesAtOnce) {
  interactive(
      "function ask(n) { morvik.info(function(i) { log(n + i.v); }); } ask('a'); ask('b');");
  const zeph::ZephMsg first = device.receive();
  const zeph::ZephMsg second = device.receive();
  request = second;
  device.send(informed({{"v", "2"}}));
  request = first;
  device.send(informed({{"v", "1"}}));
  EXPECT_THAT(app.logged(2), ElementsAre("b2", "a1"));
}

TEST_F(InfoTest, objectsCanBeUsedLater) {
  ask("function(info) { info.mine = 1; setTimeout(0, function() {"
      " log(JSON.stringify(info)); }); }");
  device.send(informed({{"a", "1"}}));
  EXPECT_EQ(app.logged(), R"({"a":"1","mine":1})");
}

}  // namespace
}  // namespace morvik::test
