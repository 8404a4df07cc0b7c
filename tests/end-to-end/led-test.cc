// morvik.led: what each call sends, how values are converted, and what is refused.
#include <gmock/gmock.h>
#include <syslog.h>

#include <string>
#include <vector>

#include "support/system/system-test.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class LedTest : public DeviceTest {
 protected:
  // The envelope that every LED request has; its payload is added by the test.
  zeph::ZephMsg envelopeOf(const zeph::ZephMsg& sent) const {
    zeph::ZephMsg message;
    message.set_id(sent.id());
    message.set_interactiveid(interactiveId);
    return message;
  }
};

TEST_F(LedTest, lightSendsTheColourAndHearsTheCode) {
  interactive("log(typeof morvik.led.light('red', log));");
  const zeph::ZephMsg sent = receiveAndReply("OK");
  zeph::ZephMsg expected = envelopeOf(sent);
  expected.mutable_led()->mutable_light()->set_color("red");
  EXPECT_EQ(sent.DebugString(), expected.DebugString());
  EXPECT_EQ(app.logged(), "undefined");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(app.waitForLog("LED Light: color[red]").priority, LOG_DEBUG);
}

TEST_F(LedTest, fadeSendsColourAndPeriodAndHearsTheCode) {
  interactive("morvik.led.fade('#00ff00', 500, log);");
  const zeph::ZephMsg sent = receiveAndReply("BUSY");
  zeph::ZephMsg expected = envelopeOf(sent);
  expected.mutable_led()->mutable_fade()->set_color("#00ff00");
  expected.mutable_led()->mutable_fade()->set_period(500);
  EXPECT_EQ(sent.DebugString(), expected.DebugString());
  EXPECT_EQ(app.logged(), "BUSY");
  EXPECT_EQ(app.waitForLog("LED Fade: color[#00ff00] period[500]").priority, LOG_DEBUG);
}

TEST_F(LedTest, pulseSendsColourPeriodAndCountAndHearsTheCode) {
  interactive("morvik.led.pulse('blue', 250, 3, log);");
  const zeph::ZephMsg sent = receiveAndReply("OK");
  zeph::ZephMsg expected = envelopeOf(sent);
  expected.mutable_led()->mutable_pulse()->set_color("blue");
  expected.mutable_led()->mutable_pulse()->set_period(250);
  expected.mutable_led()->mutable_pulse()->set_pulse(3);
  EXPECT_EQ(sent.DebugString(), expected.DebugString());
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(app.waitForLog("LED Pulse: color[blue] period[250] pulse[3]").priority, LOG_DEBUG);
}

TEST_F(LedTest, aRequestIsAnsweredAndLaterFinished) {
  interactive("morvik.led.light('red', log);");
  const zeph::ZephMsg sent = receiveAndReply("OK");
  device.event(sent, "TERMINATED");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(app.logged(), "TERMINATED");
}

struct Conversion {
  std::string argument;
  std::string color;
};

TEST_F(LedTest, anyValueIsAColour) {
  const std::vector<Conversion> rows{{"'red'", "red"},
                                     {"''", ""},
                                     {"undefined", "undefined"},
                                     {"null", "null"},
                                     {"255", "255"},
                                     {"[1, 2]", "1,2"},
                                     {"{}", "[object Object]"},
                                     {"'a\\u0000b'", "a b"},
                                     {"log", "function log() { [native code] }"}};
  std::string script;
  for (const Conversion& row : rows) script += "morvik.led.light(" + row.argument + "); ";
  interactive(script);
  for (const Conversion& row : rows)
    EXPECT_EQ(device.receive().led().light().color(), row.color) << row.argument;
}

struct Number {
  std::string argument;
  int value;
};

TEST_F(LedTest, anyValueIsANumberOfThirtyTwoBits) {
  const std::vector<Number> rows{
      {"0", 0},        {"2.9", 2},         {"-1", -1},        {"-2.9", -2},
      {"'abc'", 0},    {"'12'", 12},       {"undefined", 0},  {"null", 0},
      {"true", 1},     {"{}", 0},          {"[7]", 7},        {"NaN", 0},
      {"Infinity", 0}, {"4294967295", -1}, {"4294967297", 1}, {"2147483648", -2147483647 - 1}};
  std::string script;
  for (const Number& row : rows)
    script += "morvik.led.fade('x', " + row.argument +
              ");"
              "morvik.led.pulse('x', 1, " +
              row.argument + "); ";
  interactive(script);
  for (const Number& row : rows) {
    EXPECT_EQ(device.receive().led().fade().period(), row.value) << row.argument;
    EXPECT_EQ(device.receive().led().pulse().pulse(), row.value) << row.argument;
  }
  app.waitForLog("LED Fade: color[x] period[-1]");
  app.waitForLog("LED Pulse: color[x] period[1] pulse[-1]");
}

const std::vector<std::string> kWrongCalls{"light()",
                                           "light('x', 5)",
                                           "light('x', 'y', log)",
                                           "light(1, 2, 3)",
                                           "light('x', {})",
                                           "fade()",
                                           "fade('x')",
                                           "fade('x', 1, 2)",
                                           "fade('x', log, 1)",
                                           "fade('x', 1, log, 2)",
                                           "pulse('x')",
                                           "pulse('x', 1)",
                                           "pulse('x', 1, 2, 3)",
                                           "pulse('x', 1, 2, log, log)"};

std::string callsCaught(const std::vector<std::string>& calls) {
  std::string script;
  for (const std::string& call : calls)
    script += "log(caught(function() { morvik.led." + call + "; })); ";
  return script;
}

TEST_F(LedTest, wrongArgumentsAreRefusedInAndOutOfInteractiveMode) {
  app = run(callsCaught(kWrongCalls));
  for (const std::string& call : kWrongCalls)
    EXPECT_EQ(app.logged(), "string: Wrong arguments") << call;
  interactive(callsCaught(kWrongCalls) + "ping();");
  for (const std::string& call : kWrongCalls)
    EXPECT_EQ(app.logged(), "string: Wrong arguments") << call;
  EXPECT_TRUE(device.receive().has_ping()) << "nothing was sent before";
}

TEST_F(LedTest, outOfInteractiveModeNothingIsSent) {
  const std::vector<std::string> calls{"light('x')",       "light('x', log)",
                                       "fade('x', 1)",     "fade('x', 1, log)",
                                       "pulse('x', 1, 2)", "pulse('x', 1, 2, log)"};
  connect(callsCaught(calls) + "morvik.start(log, {});");
  for (const std::string& call : calls)
    EXPECT_EQ(app.logged(), "string: Must be in interactive mode") << call;
  EXPECT_TRUE(device.receive().has_interactivemode()) << "nothing was sent before";
}

// A function in the last place that is not one too many is a value like others.
TEST_F(LedTest, aFunctionInAValuesPlaceIsAValue) {
  interactive("morvik.led.fade('x', log);");
  EXPECT_EQ(device.receive().led().fade().period(), 0);
}

TEST_F(LedTest, aConversionThatThrowsPassesOnAndSendsNothing) {
  interactive(
      callsCaught({"light({toString: function() { throw 'mine'; }}, log)", "light(Symbol('s'))",
                   "fade('x', {valueOf: function() { throw 7; }})", "fade('x', Symbol('s'))"}) +
      "ping();");
  EXPECT_EQ(app.logged(), "string: mine");
  EXPECT_EQ(app.logged(), "object: TypeError: Cannot convert a Symbol value to a string");
  EXPECT_EQ(app.logged(), "number: 7");
  EXPECT_EQ(app.logged(), "object: TypeError: Cannot convert a Symbol value to a number");
  EXPECT_TRUE(device.receive().has_ping()) << "nothing was sent before";
}

TEST_F(LedTest, valuesAreReadInTheirOrder) {
  interactive(
      "function value(name) { return {toString: function() { log(name); return '1'; }}; }"
      "morvik.led.pulse(value('colour'), value('period'), value('pulse')); log('end');");
  EXPECT_THAT(app.loggedUntil("end"), ElementsAre("colour", "period", "pulse"));
}

}  // namespace
}  // namespace morvik::test
