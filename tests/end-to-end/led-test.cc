// morvik.led: a request and its two answers, and values that cannot be converted.
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

class LedTest : public DeviceTest {};

TEST_F(LedTest, aRequestIsAnsweredAndLaterFinished) {
  interactive("morvik.led.light('red', log);");
  const zeph::ZephMsg sent = receiveAndReply("OK");
  device.event(sent, "TERMINATED");
  EXPECT_THAT(app.logged(2), testing::ElementsAre("OK", "TERMINATED"));
}

TEST_F(LedTest, aConversionThatThrowsPassesOnAndSendsNothing) {
  std::string script;
  for (const std::string call :
       {"light({toString: function() { throw 'mine'; }}, log)", "light(Symbol('s'))",
        "fade('x', {valueOf: function() { throw 7; }})", "fade('x', Symbol('s'))"})
    script += "log(caught(function() { morvik.led." + call + "; })); ";
  interactive(script + "ping();");
  EXPECT_THAT(app.logged(4),
              testing::ElementsAre(
                  "string: mine", "object: TypeError: Cannot convert a Symbol value to a string",
                  "number: 7", "object: TypeError: Cannot convert a Symbol value to a number"));
  EXPECT_TRUE(device.receive().has_ping()) << "nothing was sent before";
}

}  // namespace
}  // namespace morvik::test
