// How a received message finds the reply function of its request.
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kNotFound[] = "NO CORRELATION FOUND";

class CorrelationTest : public DeviceTest {
 protected:
  std::ptrdiff_t notFound() const { return std::ranges::count(app.texts(), kNotFound); }
};

TEST_F(CorrelationTest, aReplyBeforeAnyRequestIsAWarning) {
  connect("");
  zeph::ZephMsg message = newMessage();
  message.set_correlationid("11111111-2222-3333-4444-555555555555");
  message.mutable_response()->set_code(zeph::OK);
  device.send(message);
  EXPECT_EQ(app.waitForLog(kNotFound).priority, LOG_WARNING);
  EXPECT_TRUE(app.alive());
}

TEST_F(CorrelationTest, aReplyToNothingIsAWarningAndNothingElse) {
  interactive("ping(log);");
  const zeph::ZephMsg request = device.receive();
  const std::vector<std::string> ids{"",
                                     "x",
                                     "xyz",
                                     "abcd",
                                     request.id().substr(0, 4),
                                     request.id() + "x",
                                     "11111111-2222-3333-4444-555555555555"};
  for (const std::string& id : ids) {
    zeph::ZephMsg message = newMessage();
    message.set_correlationid(id);
    message.mutable_response()->set_code(zeph::ERROR);
    device.send(message);
  }
  device.reply(request, "OK");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(notFound(), std::ssize(ids));
}

TEST_F(CorrelationTest, aReplyToARequestWithoutAFunctionIsAWarning) {
  interactive("ping(); morvik.led.light('red'); ping(log);");
  receiveAndReply("OK");
  receiveAndReply("OK");
  receiveAndReply("TERMINATED");
  EXPECT_EQ(app.logged(), "TERMINATED");
  EXPECT_EQ(notFound(), 2);
}

TEST_F(CorrelationTest, aMessageWithoutACorrelationIdFindsNothingAndWarnsOfNothing) {
  interactive("ping(log);");
  const zeph::ZephMsg request = device.receive();
  zeph::ZephMsg message = newMessage();
  message.mutable_response()->set_code(zeph::ERROR);
  device.send(message);
  device.reply(request, "OK");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(notFound(), 0);
}

TEST_F(CorrelationTest, aFoundReplyIsToldInFourLines) {
  interactive("ping(log);");
  const zeph::ZephMsg reply = responseTo(device.receive(), "OK");
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
  std::vector<std::string> texts = app.texts();
  const auto received =
      std::ranges::find(texts, withoutAddresses("Received MSG\n" + reply.DebugString()));
  EXPECT_THAT(
      std::vector(received + 1, texts.end()),
      ElementsAre("zephmsg callback handler", "function pointer: %p", "callback data: %p",
                  "response: %p", "Event: PingFunction", "calling response function", "JSLOG: OK"));
  for (const LogRecord& record : app.records()) {
    const bool told =
        withoutAddresses(record.text) != record.text || record.text == "zephmsg callback handler";
    EXPECT_TRUE(!told || record.priority == LOG_DEBUG) << record.text;
  }
}

TEST_F(CorrelationTest, anEntryStaysForLaterReplies) {
  interactive("ping(log);");
  const zeph::ZephMsg request = device.receive();
  device.reply(request, "BUSY");
  device.reply(request, "OK");
  device.event(request, "TERMINATED");
  EXPECT_THAT(app.logged(3), ElementsAre("BUSY", "OK", "TERMINATED"));
}

TEST_F(CorrelationTest, repliesFindTheirRequestsInAnyOrder) {
  interactive(
      "function ask(n) { ping(function(code) { log(n + ' ' + code); }); }"
      "for (var i = 0; i < 20; ++i) ask(i);");
  std::vector<zeph::ZephMsg> requests;
  for (int i = 0; i < 20; ++i) requests.push_back(device.receive());
  for (int i = 19; i >= 0; --i) device.reply(requests.at(size_t(i)), i % 2 == 0 ? "OK" : "BUSY");
  for (int i = 19; i >= 0; --i)
    EXPECT_EQ(app.logged(), std::to_string(i) + (i % 2 == 0 ? " OK" : " BUSY"));
  EXPECT_EQ(notFound(), 0);
}

TEST_F(CorrelationTest, aReplyFunctionMaySendRequests) {
  interactive("var left = 5; ping(function again(code) { log(code); if (--left) ping(again); });");
  for (int i = 0; i < 5; ++i) {
    receiveAndReply("OK");
    EXPECT_EQ(app.logged(), "OK");
  }
}

TEST_F(CorrelationTest, requestsHaveIdsOfTheirOwn) {
  interactive("ping(); ping(); morvik.led.light('x'); morvik.info(log);");
  std::set<std::string> ids;
  for (int i = 0; i < 4; ++i) {
    const zeph::ZephMsg request = device.receive();
    EXPECT_THAT(request.id(), testing::MatchesRegex(kUuid));
    ids.insert(request.id());
  }
  EXPECT_EQ(ids.size(), 4U);
}

TEST_F(CorrelationTest, aReplyThatStopsInteractiveModeReachesTheScriptFirst) {
  interactive("ping(log);");
  zeph::ZephMsg reply = responseTo(device.receive(), "OK");
  reply.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  device.send(reply);
  app.waitForLog("interactive mode stopped, autokill in 300000ms");
  const std::vector<std::string> texts = app.texts();
  EXPECT_THAT(std::vector(texts.end() - 2, texts.end()),
              ElementsAre("JSLOG: OK", "interactive mode stopped, autokill in 300000ms"));
}

TEST_F(CorrelationTest, aReplyThatStartsInteractiveModeIsAReplyLikeOthers) {
  interactive("ping(log);");
  zeph::ZephMsg reply = responseTo(device.receive(), "OK");
  reply.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_THAT(app.warnings(), ElementsAre(kNoParams));
}

TEST_F(CorrelationTest, aMessageForNobodyIsReadAndForgotten) {
  interactive("ping(log);");
  const zeph::ZephMsg request = device.receive();
  zeph::ZephMsg pressed = newMessage();
  pressed.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  device.send(pressed);
  device.reply(request, "OK");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_THAT(app.texts(), Contains(withoutAddresses("Received MSG\n" + pressed.DebugString())));
  EXPECT_THAT(app.warnings(), ElementsAre(kNoParams));
}

}  // namespace
}  // namespace morvik::test
