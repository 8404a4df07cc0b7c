// morvik-dev test: what passes, what fails and what is said of it, and how time goes on meanwhile.
#include <csignal>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "desk-fixture.h"
#include "device/json.h"
#include "pty-program.h"
#include "support/file-content.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

// Connects, becomes interactive, and goes on with this.
std::string interactively(const std::string& script) {
  return "var address = instanceName.split(':');\n"
         "morvik.connect(address[0], Number(address[1]));\n"
         "morvik.start(function () {\n" +
         script + "\n}, {});\n";
}

class AppTestsTest : public DeskTest {
 protected:
  // Runs the tests in this script on an application, and gives what was said.
  ProgramResult runTests(const std::string& script, const std::string& tests,
                         const std::vector<std::string>& options = {}) {
    app_ = write("app", script, "<access>led</access><access>button</access>");
    std::ofstream(app_ / "test.js") << tests;
    std::vector<std::string> command{MORVIK_DEV, "test", app_};
    command.insert(command.end(), options.begin(), options.end());
    return run(command);
  }

  // One test passes, with this body.
  void expectPass(const std::string& script, const std::string& body,
                  const std::string& options = "{}") {
    const ProgramResult outcome =
        runTests(script, "test('it', " + options + ", async ({ device, app, time }) => {\n" + body +
                             "\n});");
    EXPECT_EQ(outcome.output, "TAP version 14\nok 1 - it\n1..1\n");
    EXPECT_EQ(outcome.status, 0);
  }

  // One test fails, with this in what is said; its body begins in line 2.
  void expectFailure(const std::string& script, const std::string& body, const std::string& said,
                     const std::vector<std::string>& options = {}) {
    const ProgramResult outcome = runTests(
        script, "test('it', async ({ device, app, time }) => {\n" + body + "\n});", options);
    EXPECT_THAT(outcome.output,
                AllOf(StartsWith("TAP version 14\nnot ok 1 - it\n"), HasSubstr(said)));
    EXPECT_EQ(outcome.status, 1);
  }

  fs::path app_;
};

// --- time

TEST_F(AppTestsTest, timesOfTheHostPassInAMoment) {
  expectPass("log('up');",
             "await app.logs('up');\nconst end = await app.ends('never-connected');\n"
             "expect(end.headline).toMatch('after 10.0 s');");
}

TEST_F(AppTestsTest, fiveMinutesAfterAStopNoticePassToo) {
  expectPass(interactively(""),
             "await app.interactive();\nawait device.stop();\nawait time.pass('4 min');\n"
             "expect(app.state).toBe('stopping');\n"
             "await app.ends('stop-notice', { within: '61 s' });");
}

// Each timer sees its own time, and what the device does meanwhile comes in between.
TEST_F(AppTestsTest, timeNeverOvertakesWork) {
  expectPass(interactively("var ticks = 0;\n"
                           "morvik.led.fade('red', 1000, function (code) {\n"
                           "  log(code + ' after ' + ticks);\n"
                           "});\n"
                           "setTimeout(10, function () { ticks++; return true; });\n"
                           "setTimeout(2005, function () { log('ticks: ' + ticks); });"),
             "await app.logs('OK after 0');\nconst begun = time.now();\n"
             "await app.logs(/^TERMINATED after (99|100)$/);\n"
             "expect(time.now() - begun).toBe(1000);\nawait app.logs('ticks: 200');");
}

TEST_F(AppTestsTest, scriptsSeeTheTimeOfDayOfTheTest) {
  expectPass(
      "log(new Date().toISOString());\n"
      "setTimeout(3600000, function () { log(new Date().getHours()); });\n"
      "var address = instanceName.split(':');\n"
      "morvik.connect(address[0], Number(address[1]));\n"
      "morvik.start(function () { log(timestamp()); }, {});",
      "await app.logs('2026-03-29T00:30:00.000Z');\nawait app.logs('1774744200');\n"
      "expect(new Date().toISOString()).toBe('2026-03-29T00:30:00.000Z');\n"
      "await time.pass('1 h');\nawait app.logs('1');\nexpect(Date.now()).toBe(time.now());",
      "{ at: '2026-03-29T00:30:00Z' }");
}

// A script that waits for a later hour would wait for ever on a clock that stands still.
TEST_F(AppTestsTest, timeFlowsForAScriptThatWaitsForIt) {
  expectPass("var end = Date.now() + 30;\nwhile (Date.now() < end);\nlog('late');",
             "await app.logs('late');");
}

TEST_F(AppTestsTest, timeFlowsForATimerOfNoTime) {
  const std::string timer =
      "var end = Date.now() + 30;\n"
      "setTimeout(0, function () { return Date.now() < end || log('late'); });";
  expectPass(timer, "await app.logs('late');");
  expectPass(interactively(timer), "await app.logs('late');");
}

// --- what fails

TEST_F(AppTestsTest, showsWhatIsNotAsExpected) {
  expectFailure(interactively("morvik.led.light('red');"),
                "await app.interactive();\n"
                "await expect(device).toShow({ led: { color: 'blue', effect: 'light' } });",
                "  at: \"" + (folder_ / "app/test.js") +
                    ":3:22\"\n"
                    "  difference: |2-\n"
                    "      {\n"
                    "        \"led\": {\n"
                    "    -     \"color\": \"blue\",\n"
                    "    +     \"color\": \"red\",\n"
                    "          \"effect\": \"light\"\n"
                    "        }\n"
                    "      }\n");
}

TEST_F(AppTestsTest, explainsWhyAnApplicationDied) {
  expectFailure(interactively("setTimeout(10, function () { var all = []; for (;;) all.push({}); "
                              "});"),
                "await app.logs('hello');", "app ended after 10 ms");
  EXPECT_THAT(runTests("", "test('it', async ({ app }) => { await time.pass('11 s'); });").output,
              AllOf(HasSubstr("the test did not expect it: await app.ends()"),
                    HasSubstr("not interactive")));
}

TEST_F(AppTestsTest, mindsExceptionsThatNobodyExpects) {
  const std::string script = interactively("setTimeout(5, function () { throw 'my fault'; });");
  expectFailure(script, "await time.pass('1 s');", "my fault");
  expectPass(script, "await app.throws('my fault');");
}

TEST_F(AppTestsTest, mindsWhatIsNotWaitedFor) {
  expectFailure("", "app.logs('hello');", "test.js:2:5");
  expectFailure("", "expect(device).toShow({ led: 1 }, { within: 0 });\nawait time.pass(1);",
                "test.js:2:16");
}

TEST_F(AppTestsTest, refusesStimuliThatMakeNoSense) {
  expectFailure(interactively(""), "await device.ear('LEFT', 17);", "17 is no number from 0 to 16");
}

TEST_F(AppTestsTest, endsWhatTakesTooLong) {
  expectFailure("for (;;);", "await app.interactive();", "app has something to do all the time",
                {"--limit=1"});
  expectFailure("", "for (;;);", "took longer than 100 ms", {"--limit=0.1"});
}

TEST_F(AppTestsTest, tellsOfATestThatCannotBeRead) {
  const ProgramResult outcome = runTests("", "test('it', async () => {\n  await );\n});");
  EXPECT_THAT(outcome.output,
              AllOf(HasSubstr("SyntaxError: Unexpected token ')'"), HasSubstr("test.js:2:9")));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(runTests("", "const none = 1;").output, HasSubstr("there is no test in it"));
}

// --- what is fresh for each test

TEST_F(AppTestsTest, eachTestHasItsOwnFilesDeviceAndScript) {
  const ProgramResult outcome = runTests(
      "try { log(file.read('kept').text); } catch (none) { log('nothing'); }\n"
      "file.write('kept', 'something');",
      "let run = 0;\n"
      "for (const name of ['one', 'two']) test(name, async ({ device, app }) => {\n"
      "  await app.logs('nothing');\n  await device.message('anna', 'hello');\n"
      "  expect((await device.view()).messages.length).toBe(1);\n  expect(++run).toBe(1);\n"
      "  expect(await app.read('kept')).toBe('something');\n});\n"
      "test('three', { files: { kept: 'given' } }, async ({ app }) => {\n"
      "  await app.logs('given');\n});");
  EXPECT_EQ(outcome.output, "TAP version 14\nok 1 - one\nok 2 - two\nok 3 - three\n1..3\n");
  EXPECT_FALSE(fs::exists(app_ / "kept"));
  expectNothingLeft();
}

// --- forms of the results

constexpr char kTwoTests[] =
    "test('good <&> #1', async () => { log('a word'); });\n"
    "test('bad', async () => { expect(1).toBe(2); });";

TEST_F(AppTestsTest, speaksTap) {
  EXPECT_THAT(runTests("", kTwoTests).output,
              StartsWith("TAP version 14\n# a word\nok 1 - good <&> \\#1\nnot ok 2 - bad\n  ---\n"
                         "  message: \"expected: it is 2\"\n"));
}

TEST_F(AppTestsTest, writesAFileForBuildServers) {
  const std::string file = folder_ / "results.xml";
  EXPECT_EQ(runTests("", kTwoTests, {"--junit=" + file}).status, 1);
  const std::string text = contentOf(file);
  EXPECT_THAT(text, AllOf(HasSubstr(R"(tests="2" failures="1")"),
                          HasSubstr("name=\"good &lt;&amp;&gt; #1\""),
                          HasSubstr("<failure message=\"expected: it is 2\">")));
  const GMarkupParser deaf{};
  GMarkupParseContext* parser =
      g_markup_parse_context_new(&deaf, G_MARKUP_DEFAULT_FLAGS, nullptr, nullptr);
  EXPECT_TRUE(g_markup_parse_context_parse(parser, text.data(), -1, nullptr) &&
              g_markup_parse_context_end_parse(parser, nullptr))
      << text;
  g_markup_parse_context_free(parser);
}

TEST_F(AppTestsTest, speaksJson) {
  const Json all = Json::parse(runTests("", kTwoTests, {"--json"}).output);
  EXPECT_EQ(all["passed"], 1);
  EXPECT_EQ(all["failed"], 1);
  EXPECT_EQ(all["tests"][0]["comments"][0], "a word");
  EXPECT_EQ(all["tests"][1]["failure"]["line"], 2);
  EXPECT_EQ(all["tests"][1]["failure"]["difference"], "- 2\n+ 1");
}

TEST_F(AppTestsTest, speaksToAPersonOnATerminal) {
  runTests("", kTwoTests);
  PtyProgram program(loop_, {MORVIK_DEV, "test", app_});
  program.waitFor("\x1b[32mok    \x1b[0m good");
  program.waitFor("\x1b[31mFAILED\x1b[0m bad");
  program.waitFor("1 passed, 1 failed");
  EXPECT_EQ(program.waitForEnd(), 1);
}

// --- the command line

TEST_F(AppTestsTest, runsWhatIsAskedFor) {
  runTests("", kTwoTests);
  std::ofstream(app_ / "more.test.js") << kTwoTests;
  EXPECT_THAT(run({MORVIK_DEV, "test", app_, app_ / "more.test.js", "--grep=^GOOD"}).output,
              EndsWith("ok 1 - good <&> \\#1\n1..1\n"));
  EXPECT_EQ(run({MORVIK_DEV, "test", app_, "--grep=none"}).status, 2);
}

TEST_F(AppTestsTest, refusesWhatMakesNoSense) {
  const fs::path app = write("untested", "");
  EXPECT_EQ(run({MORVIK_DEV, "test"}).status, 2);
  EXPECT_EQ(run({MORVIK_DEV, "test", folder_ / "none"}).status, 2);
  EXPECT_THAT(run({MORVIK_DEV, "test", app}).output, HasSubstr("there is no test in"));
  EXPECT_EQ(run({MORVIK_DEV, "test", app, app / "none.js"}).status, 2);
  EXPECT_EQ(run({MORVIK_DEV, "test", app, app / "main.js", "--grep=("}).status, 2);
  EXPECT_EQ(run({MORVIK_DEV, "test", app, app / "main.js", "--limit=0"}).status, 2);
}

TEST_F(AppTestsTest, leavesNothingWhenItIsTold) {
  runTests("", "");
  std::ofstream(app_ / "test.js") << "test('it', async ({ app }) => {\n  log('begun');\n  await "
                                     "app.interactive();\n  for (;;);\n});";
  write("app", interactively("log('here');"));
  Program program({MORVIK_DEV, "test", app_});
  ASSERT_TRUE(comesTrue([&] {
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      if (entry.path().filename().string().starts_with("morvik-test-")) return true;
    }
    return false;
  }));
  program.signal(SIGTERM);
  EXPECT_EQ(program.waitForEnd(), 1);
  expectNothingLeft();
  for (const auto& entry : fs::directory_iterator(folder_.path())) {
    EXPECT_THAT(entry.path().filename().string(), Not(StartsWith("morvik-test-")));
  }
}

// The LED goes red, and five minutes later somebody presses the button.
constexpr char kKitchen[] =
    R"({"recording":"morvik-dev","version":1,"time":0,"device":"virtual"}
{"at":0,"event":"came","application":1}
{"at":5,"event":"received","application":1,"message":{"id":"a","interactiveMode":{"action":"START","interactiveId":"old"}}}
{"at":6,"event":"sent","application":1,"message":{"id":"d","correlationId":"a","response":{"code":"OK"}}}
{"at":9,"event":"received","application":1,"message":{"id":"b","interactiveId":"old","led":{"light":{"color":"red"}}}}
{"at":9,"event":"sent","application":1,"message":{"id":"e","correlationId":"b","response":{"code":"BUSY"}}}
{"at":300009,"event":"sent","application":1,"message":{"id":"f","buttonCallback":{"type":"SIMPLE"}}}
)";

class ReplayedTest : public AppTestsTest {
 protected:
  ProgramResult replayed(const std::string& color, const std::string& body,
                         const std::string& recording = kKitchen) {
    std::filesystem::create_directories(folder_ / "app");
    std::ofstream(folder_ / "app/kitchen.jsonl") << recording;
    return runTests(interactively("morvik.button.addListener(function (type) {\n"
                                  "  log('pressed: ' + type); return true; });\n"
                                  "morvik.led.light('" +
                                  color + "', function (code) { log('LED: ' + code); });"),
                    "test('it', { replay: 'kitchen.jsonl' }, async ({ device, app, time }) => {\n" +
                        body + "\n});");
  }
};

TEST_F(ReplayedTest, answersAndGoesOnAsItWasRecorded) {
  const ProgramResult outcome = replayed(
      "red",
      "await app.logs('LED: BUSY'); await app.logs('pressed: SIMPLE', { within: '6 min' });");
  EXPECT_EQ(outcome.output, "TAP version 14\nok 1 - it\n1..1\n");
}

TEST_F(ReplayedTest, failsWhereTheApplicationLeavesTheRecording) {
  const ProgramResult outcome = replayed("blue", "await app.logs('LED: ERROR');");
  EXPECT_THAT(outcome.output,
              AllOf(StartsWith("TAP version 14\nnot ok 1 - it\n"), HasSubstr("line 5"),
                    HasSubstr(R"(led.light.color: "red" in the recording, "blue" now)")));
  EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReplayedTest, takesNoStimuli) {
  EXPECT_THAT(replayed("red", "await device.button('SIMPLE');").output,
              HasSubstr("what happens to the device stands in it"));
}

TEST_F(ReplayedTest, tellsTheLineOfADamagedRecording) {
  EXPECT_THAT(replayed("red", "", std::string(kKitchen) + "{\n").output,
              HasSubstr("kitchen.jsonl:8: "));
}

}  // namespace
}  // namespace morvik::test
