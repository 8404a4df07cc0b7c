// morvik.serial: the current port, lines to the script's object, standard output, and what has no
// name.
#include "devices/serial.h"

#include <unistd.h>

#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

constexpr const char* kLine =
    "serialCallback { readline { port: '/dev/p' data: 'abc' base: 'h' } }";
constexpr const char* kPuts = "call onMessage\ncast\narg0\n";
constexpr const char* kPutsWithCall = "call onMessage\ncast\narg0\ncall onMessage\n";

class SerialTest : public FeatureTest {
 protected:
  SerialTest() {
    expose("plain", addPlainListener);
    expose("writeH", writeH);
    expose("writeA", writeA);
    expose("openAsIs", openWithoutDefaults);
  }

  guint listeners() { return g_list_length(instance.listeners); }

  // What the action leaves on standard output.
  static std::string output(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
  }

  std::string outputOfLine() {
    return output([this] { deliver(zephMsg(kLine)); });
  }

  void add(const std::string& listener) {
    output([&] { EXPECT_EQ(run("morvik.serial.addListener__(" + listener + ")"), "undefined"); });
  }

  // Opens a port and forgets the request.
  void open(const std::string& port) {
    run("morvik.serial.open__('" + port + "')");
    sent();
  }

  // The current port, as the writers send it.
  std::string currentPort() {
    becomeInteractive("granted");
    output([this] { run("writeH('')"); });
    const auto message = sent();
    return message ? message->serial().write().port() : "nothing was sent";
  }
};

std::string opened(const std::string& port, int baud) {
  return "serial { open { port: \"" + port + "\" baud: " + std::to_string(baud) + " } }";
}

std::string written(const std::string& port, const std::string& base, const std::string& data) {
  return "serial { write { port: \"" + port + "\" data: \"" + data + "\" base: \"" + base +
         "\" } }";
}

TEST_F(SerialTest, whatHasNoNameNeedsInteractiveModeToo) {
  expectRefuses(needMode({"writeH('x')", "writeA('x')", "openAsIs('p', 1)"}) +
                throwing({"openAsIs(bad)", "openAsIs('p', bad)", "writeH(bad)", "writeA(bad)"}));
  expectReads({{"openAsIs(read('p'), read('r'))", "pr"}});
}

// In a process of its own, where nothing was opened before.
TEST_F(SerialTest, theCurrentPortStartsEmpty) {
  EXPECT_EXIT(_exit(currentPort().empty() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(SerialTest, aRefusedOpenLeavesTheCurrentPort) {
  becomeInteractive();
  open("first");
  instance.interactiveID.reset();
  run("morvik.serial.open__('second')");
  EXPECT_EQ(currentPort(), "first");
  run("morvik.serial.open__('third', 'x')");
  run("morvik.serial.open__(bad)");
  EXPECT_EQ(currentPort(), "first");
  open("fourth");
  EXPECT_EQ(currentPort(), "fourth");
}

TEST_F(SerialTest, addingAListenerSaysSoOnStandardOutput) {
  EXPECT_EQ(output([this] { run("morvik.serial.addListener__({onMessage: f})"); }), "dans c++\n");
  EXPECT_EQ(listeners(), 1U);
  EXPECT_FALSE(sent());
}

TEST_F(SerialTest, whatIsNoObjectIsRefusedAfterTheLine) {
  for (const char* argument : {"", "1", "'x'", "null", "undefined", "true"}) {
    SCOPED_TRACE(argument);
    EXPECT_EQ(output([&] {
                EXPECT_EQ(run(std::string("morvik.serial.addListener__(") + argument + ")"),
                          "throws: Wrong arguments");
              }),
              "dans c++\n");
  }
  EXPECT_EQ(listeners(), 0U);
}

TEST_F(SerialTest, aLineReachesTheFunctionWithItsObject) {
  run("var o = {onMessage: function(object, port, data) {"
      "  log([object === o, port, data, arguments.length, this === o.onMessage].join());"
      "  return true; }}");
  add("o");
  EXPECT_EQ(outputOfLine(), kPutsWithCall);
  EXPECT_THAT(logged(), ElementsAre("true,/dev/p,abc,3,true"));
  EXPECT_EQ(listeners(), 1U);
}

TEST_F(SerialTest, aMessageWithoutALineHasEmptyTexts) {
  add("{onMessage: (o, port, data) => log('[' + port + '][' + data + ']')}");
  output([this] { deliver(zephMsg("serialCallback {}")); });
  EXPECT_THAT(logged(), ElementsAre("[][]"));
}

TEST_F(SerialTest, otherMessagesPassItBy) {
  add("{onMessage: tell}");
  EXPECT_EQ(output([this] {
              deliver(zephMsg("serial { open { port: 'p' baud: 1 } }"));
              deliver(zephMsg("buttonCallback { type: SIMPLE }"));
            }),
            "");
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_EQ(listeners(), 1U);
}

TEST_F(SerialTest, hearsUntilItsFunctionReturnsSomethingElseThanTrue) {
  for (const char* result : {"true", "false", "undefined", "1", "'true'", "new Boolean(true)"}) {
    SCOPED_TRACE(result);
    add(std::string("{onMessage: () => ") + result + "}");
    outputOfLine();
    EXPECT_EQ(listeners(), std::string_view(result) == "true" ? 1U : 0U);
    instance.releaseListeners();
  }
}

TEST_F(SerialTest, theFunctionIsLookedUpForEachLine) {
  run("var o = {onMessage: () => { log('first'); return true; }}");
  add("o");
  outputOfLine();
  run("o.onMessage = () => { log('second'); }");
  outputOfLine();
  EXPECT_THAT(logged(), ElementsAre("first", "second"));
}

TEST_F(SerialTest, withoutAFunctionThereIsAWarningAndItGoes) {
  for (const char* listener : {"{}", "{onMessage: 1}", "{onMessage: {}}", "f", "[]"}) {
    SCOPED_TRACE(listener);
    log.clear();
    add(listener);
    EXPECT_EQ(outputOfLine(), kPuts);
    EXPECT_EQ(ownLines(), Lines{"WARNING serial listener without a function onMessage"});
    EXPECT_EQ(listeners(), 0U);
  }
}

TEST_F(SerialTest, aGetterThatThrowsIsReportedOnceAndItGoes) {
  for (const char* listener : {"{get onMessage() { throw 'no function'; }}",
                               "new Proxy({}, {get() { throw 'no function'; }})"}) {
    SCOPED_TRACE(listener);
    log.clear();
    add(listener);
    EXPECT_EQ(outputOfLine(), kPuts);
    EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING),
                testing::Contains(testing::EndsWith(": no function")).Times(1));
    EXPECT_EQ(listeners(), 0U);
  }
}

TEST_F(SerialTest, aFunctionThatThrowsIsReportedAndItsListenerGoes) {
  add("{onMessage: () => { throw 'broken'; }}");
  add("{onMessage: () => { log('other'); return true; }}");
  EXPECT_EQ(outputOfLine(), std::string(kPutsWithCall) + kPutsWithCall);
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::EndsWith(": broken")));
  EXPECT_THAT(logged(), ElementsAre("other"));
  EXPECT_EQ(listeners(), 1U);
}

TEST_F(SerialTest, theObjectLivesAsLongAsItsListener) {
  add("{text: 'mine', onMessage: o => { log(o.text); return true; }}");
  isolate()->LowMemoryNotification();
  outputOfLine();
  EXPECT_THAT(logged(), ElementsAre("mine"));
}

TEST_F(SerialTest, aPlainListenerHearsTheDataAlone) {
  EXPECT_EQ(run("plain(tell)"), "undefined");
  EXPECT_FALSE(sent());
  EXPECT_EQ(outputOfLine(), "");
  deliver(zephMsg("serialCallback {}"));
  deliver(zephMsg("response { code: OK }"));
  EXPECT_THAT(logged(), ElementsAre("string abc", "string "));
  EXPECT_EQ(listeners(), 1U);
  run("result = 1");
  deliver(zephMsg(kLine));
  EXPECT_EQ(listeners(), 0U);
}

TEST_F(SerialTest, aPlainListenerWithABaseAsksForLinesOfTheCurrentPort) {
  becomeInteractive("granted");
  open("/dev/p");
  expectSends({{"plain(f, 'h')",
                "serialCallback { readline { port: \"/dev/p\" data: \"\" base: \"h\" } }",
                {}}});
  instance.interactiveID.reset();
  EXPECT_EQ(run("plain(f, '')"), "undefined");
  auto message = sent();
  ASSERT_TRUE(message);
  message->clear_id();
  EXPECT_EQ(message->ShortDebugString(),
            "serialCallback { readline { port: \"/dev/p\" data: \"\" base: \"\" } }");
  EXPECT_EQ(listeners(), 2U);
}

TEST_F(SerialTest, aPlainListenerRefusesOneAndTwoWrongArgumentsOnly) {
  expectRefuses(wrong(
      {"plain(1)", "plain({})", "plain(f, 1)", "plain(f, f)", "plain('h', f)", "plain('h', 'h')"}));
  EXPECT_EQ(listeners(), 0U);
  EXPECT_EQ(run("plain(f, 1, 2)"), "undefined");
  EXPECT_EQ(listeners(), 1U);
  for (const char* call : {"plain()", "plain(1, 2, 3)"}) {
    log.clear();
    EXPECT_EQ(run(call), "undefined");
    EXPECT_EQ(ownLines(), Lines{"WARNING serial listener without a function"});
  }
  EXPECT_EQ(listeners(), 1U);
  EXPECT_FALSE(sent());
}

TEST_F(SerialTest, theWritersTellAndSendWithTheirBase) {
  becomeInteractive("granted");
  open("/dev/p");
  EXPECT_EQ(output([this] {
              expectSends({
                  {"writeH('data')", written("/dev/p", "h", "data"), {}},
                  {"writeA('data')", written("/dev/p", "a", "data"), {}},
                  {"writeA(undefined)", written("/dev/p", "a", "undefined"), {}},
                  {"writeH('a\\0b\\u0141')", written("/dev/p", "h", "a bA"), {}},
              });
            }),
            "1 data /dev/p\n1 data /dev/p\n1 undefined /dev/p\n1 a bA /dev/p\n");
}

TEST_F(SerialTest, theWritersTakeOneArgument) {
  EXPECT_EQ(output([this] {
              expectRefuses(wrong({"writeH()", "writeH('a', 'b')", "writeA()", "writeA('a', f)"}));
            }),
            "");
}

TEST_F(SerialTest, openWithoutDefaultsLooksAtNothingAndRemembersNothing) {
  becomeInteractive("granted");
  open("first");
  expectSends({
      {"openAsIs('p', 1200)", opened("p", 1200), {}},
      {"openAsIs('p', 'x')", opened("p", 0), {}},
      {"openAsIs('p', 2.9)", opened("p", 2), {}},
      {"openAsIs('p', -1)", opened("p", -1), {}},
      {"openAsIs('p', 3000000000)", opened("p", -1294967296), {}},
      {"openAsIs()", opened("undefined", 0), {}},
  });
  EXPECT_EQ(currentPort(), "first");
}

TEST_F(SerialTest, openWithoutDefaultsConvertsBeforeItAsksForTheMode) {
  EXPECT_EQ(run("openAsIs('p', bad)"), "throws: no text");
  EXPECT_EQ(run("openAsIs(bad, 1)"), "throws: no text");
}

}  // namespace
}  // namespace morvik::test
