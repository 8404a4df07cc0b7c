// morvik.serial: lines, and what the feature writes on standard output.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

const std::string kAdded = "dans c++\n";
const std::string kCalling = "call onMessage\ncast\narg0\n";
const std::string kCalled = "call onMessage\ncast\narg0\ncall onMessage\n";

class SerialTest : public FeatureTest {
 protected:
  SerialTest() : FeatureTest("serial") {}

  // The device has read a line.
  void readLine(const std::string& data) {
    zeph::ZephMsg message = newMessage();
    auto& line = *message.mutable_serialcallback()->mutable_readline();
    line.set_port("/dev/ttyS1");
    line.set_data(data);
    line.set_base("never told");
    device.send(message);
  }

  // All that standard output has brought when all that was sent is handled; ends the host.
  std::string printed() {
    settle();
    host().killAll();
    return host().output().awaitEnd();
  }
};

TEST_F(SerialTest, addingAListenerSaysSoBeforeItRefuses) {
  const std::vector<RefusedRow> rows =
      wrong({"addListener__()", "addListener__(5)", "addListener__('x')", "addListener__(null)"});
  expectRefuses(rows);
  std::string expected;
  for (std::size_t i = 0; i < 2 * rows.size(); ++i) expected += kAdded;
  EXPECT_EQ(printed(), expected);
}

// The application never gives way, so nothing but the line's own end has brought it here.
TEST_F(SerialTest, linesOnStandardOutputArriveAtOnce) {
  app = run("morvik.serial.addListener__({}); log('spinning'); for (;;);", access());
  EXPECT_EQ(app.logged(), "spinning");
  host().output().await(kAdded);
  EXPECT_TRUE(app.alive());
}

TEST_F(SerialTest, aListenersFunctionGetsItsObjectThePortAndTheData) {
  connect(
      "var object = {onMessage: function heard() {"
      " log([this === heard, arguments.length, arguments[0] === object, arguments[1],"
      "      arguments[2]].join()); return true; }};"
      "log(morvik.serial.addListener__(object));",
      access());
  EXPECT_EQ(app.logged(), "undefined");
  readLine("first");
  EXPECT_EQ(app.logged(), "true,3,true,/dev/ttyS1,first");
  readLine("caf\xc3\xa9");
  EXPECT_EQ(app.logged(), "true,3,true,/dev/ttyS1,caf\xe9");
  zeph::ZephMsg empty = newMessage();
  empty.mutable_serialcallback();
  device.send(empty);
  EXPECT_EQ(app.logged(), "true,3,true,,");
  EXPECT_EQ(printed(), kAdded + kCalled + kCalled + kCalled);
}

TEST_F(SerialTest, otherMessagesPassAListenerBy) {
  connect("morvik.serial.addListener__({onMessage: function(o, p, data) { log(data); }});",
          access());
  zeph::ZephMsg other = newMessage();
  other.mutable_serial();
  device.send(other);
  readLine("mine");
  EXPECT_EQ(app.logged(), "mine");
  readLine("too late");
  EXPECT_EQ(printed(), kAdded + kCalled) << "it had gone";
}

TEST_F(SerialTest, listenersStayOnlyForTrue) {
  const std::vector<std::string> goes{"false", "undefined", "1", "new Boolean(true)"};
  std::string script =
      "function add(name, value) { morvik.serial.addListener__({onMessage: function() {"
      " log(name); if (value === 'throw') throw 'no'; return value; }}); }";
  for (const std::string& value : goes) script += "add('" + value + "', " + value + ");";
  connect(script + "add('throws', 'throw'); add('stays', true);", access());
  readLine("x");
  readLine("x");
  for (const std::string& value : goes) EXPECT_EQ(app.logged(), value);
  for (const std::string text : {"throws", "stays", "stays"}) EXPECT_EQ(app.logged(), text);
  EXPECT_THAT(app.warnings(), Contains(EndsWith(": no")));
}

// The function is looked for when a line comes, and what has none is told and goes.
TEST_F(SerialTest, anObjectWithoutAFunctionGoesWithAWarning) {
  connect(
      "var late = {}; morvik.serial.addListener__(late);"
      "morvik.serial.addListener__({});"
      "morvik.serial.addListener__({onMessage: 5});"
      "morvik.serial.addListener__({get onMessage() { throw 'no getter'; }});"
      "late.onMessage = function(o, p, data) { log(data); return true; };",
      access());
  readLine("first");
  readLine("second");
  EXPECT_THAT(app.logged(2), testing::ElementsAre("first", "second"));
  app.waitForLogTimes("serial listener without a function onMessage", 2);
  EXPECT_THAT(app.warnings(), Contains(EndsWith(": no getter")));
  std::string expected;
  for (int i = 0; i < 4; ++i) expected += kAdded;
  expected += kCalled;
  for (int i = 0; i < 3; ++i) expected += kCalling;
  EXPECT_EQ(printed(), expected + kCalled);
}

}  // namespace
}  // namespace morvik::test
