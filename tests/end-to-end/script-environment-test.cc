// What every script finds: log, exit, setTimeout, random, uuid, timestamp; and what it must not
// share with another application.
#include <syslog.h>

#include <ctime>
#include <set>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

class ScriptEnvironmentTest : public SystemTest {};

// --- log

TEST_F(ScriptEnvironmentTest, logWritesAMessage) {
  const App app = run("log('hello');");
  EXPECT_EQ(app.waitForLog("JSLOG: hello").priority, LOG_NOTICE);
}

// One byte for each UTF-16 unit: its low eight bits, and a blank for a zero.
TEST_F(ScriptEnvironmentTest, logTakesAnyValueAsText) {
  expectLogged({{"'text'", "text"},
                {"''", ""},
                {"undefined", "undefined"},
                {"null", "null"},
                {"true", "true"},
                {"1.5", "1.5"},
                {"-0", "0"},
                {"1e21", "1e+21"},
                {"[1, [2, 3]]", "1,2,3"},
                {"{}", "[object Object]"},
                {"{toString: function() { return 'mine'; }}", "mine"},
                {"'two\\nlines'", "two\nlines"},
                {"'100%s%n'", "100%s%n"},
                {"'a\\u0000b'", "a b"},
                {"'caf\\u00e9'", "caf\xe9"},
                {"'\\u20ac'", "\xac"},
                {"'\\u0100'", " "},
                {"'\\ud83d\\ude00'", "= "}});
}

TEST_F(ScriptEnvironmentTest, logTakesExactlyOneValue) {
  expectThrown(
      {{"log()", "string: Wrong arguments"},
       {"log(1, 2)", "string: Wrong arguments"},
       {"log(Symbol('s'))", "object: TypeError: Cannot convert a Symbol value to a string"},
       {"log({toString: function() { throw 'mine'; }})", "string: mine"}});
}

TEST_F(ScriptEnvironmentTest, logReturnsNothing) { expectLogged({{"log('x')", "x"}}); }

// --- exit

TEST_F(ScriptEnvironmentTest, exitEndsTheLoopWhenTheScriptReturnsToIt) {
  App app =
      run("morvik.connect(HOST, PORT);"
          "morvik.start(function() { log(exit()); log('still running'); }, {});");
  DeviceLink device = server.accept();
  const zeph::ZephMsg start = device.receive();
  EXPECT_EQ(endOf(app, [&] { device.grant(start); }), exited(0));
  EXPECT_THAT(app.loggedUntil("still running"), ElementsAre("undefined"));
  EXPECT_EQ(app.waitForLog("EXIT").priority, LOG_DEBUG);
}

TEST_F(ScriptEnvironmentTest, exitFromATimerEndsIt) {
  apps.gate("app");
  apps.file("app", "main.js", "setTimeout(0, function() { exit(); });");
  const App app = launch("app");
  EXPECT_EQ(endOf(app, [&] { apps.openGate("app", descriptorXml({})); }), exited(0));
}

TEST_F(ScriptEnvironmentTest, exitWithAnArgumentIsRefusedButLogged) {
  App app =
      run("log(caught(function() { exit(0); }));"
          "setTimeout(0, function() { log('alive'); });");
  EXPECT_THAT(app.loggedUntil("alive"), ElementsAre("string: Wrong arguments"));
  EXPECT_THAT(app.texts(), Contains("EXIT"));
}

// --- setTimeout

TEST_F(ScriptEnvironmentTest, setTimeoutTakesANumberAndAFunction) {
  const std::string refusal = "string: Must be setTimeout(int,function)";
  expectThrown({{"setTimeout()", refusal},
                {"setTimeout(1)", refusal},
                {"setTimeout('1', log)", refusal},
                {"setTimeout('soon', log)", refusal},
                {"setTimeout(log, 1)", refusal},
                {"setTimeout(1, 'log(1)')", refusal},
                {"setTimeout(1, log, 1)", refusal},
                {"setTimeout(null, log)", refusal},
                {"setTimeout(undefined, log)", refusal},
                {"setTimeout(new Number(1), log)", refusal},
                {"setTimeout(100000, log)", "nothing"}});
}

TEST_F(ScriptEnvironmentTest, setTimeoutLogsTheWholeNumber) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"100000", "100000"},         {"100000.9", "100000"}, {"-1", "-1"},        {"-1.9", "-1"},
      {"1410065408", "1410065408"}, {"1e10", "1410065408"}, {"4294967295", "-1"}};
  std::string script;
  for (const auto& row : rows) script += "setTimeout(" + row.first + ", function() {});";
  App app = run(script + "log(setTimeout(0, function() {})); log('end');");
  EXPECT_THAT(app.loggedUntil("end"), ElementsAre("undefined"));
  std::vector<std::string> told;
  for (const LogRecord& record : app.records())
    if (record.text.starts_with("SetTimeout: ")) {
      told.push_back(record.text);
      EXPECT_EQ(record.priority, LOG_DEBUG);
    }
  std::vector<std::string> expected;
  for (const auto& row : rows) expected.push_back("SetTimeout: " + row.second);
  expected.emplace_back("SetTimeout: 0");
  EXPECT_THAT(told, ElementsAreArray(expected));
}

TEST_F(ScriptEnvironmentTest, notANumberAndInfinityAreZero) {
  EXPECT_THAT(run("setTimeout(NaN, function() { log('nan'); });"
                  "setTimeout(Infinity, function() { log('infinity'); });"
                  "setTimeout(30, function() { log('end'); });")
                  .loggedUntil("end"),
              ElementsAre("nan", "infinity"));
}

TEST_F(ScriptEnvironmentTest, aTimerOfZeroFiresFirstAndNotBeforeTheScriptEnds) {
  EXPECT_THAT(run("setTimeout(50, function() { log('later'); });"
                  "setTimeout(0, function() { log('at once'); }); log('script');")
                  .loggedUntil("later"),
              ElementsAre("script", "at once"));
}

TEST_F(ScriptEnvironmentTest, aTimerRepeatsForAsLongAsItReturnsExactlyTrue) {
  const std::vector<std::string> once{"1",     "'true'", "new Boolean(true)", "{}", "undefined",
                                      "false", "null"};
  std::string script;
  for (const std::string& value : once)
    script += "setTimeout(1, function() { log(\"" + value + "\"); return " + value + "; });";
  script +=
      "var left = 5; setTimeout(10, function() { log('true'); return --left > 0; });"
      "setTimeout(150, function() { log('end'); });";
  std::vector<std::string> expected = once;
  expected.insert(expected.end(), 5, "true");
  EXPECT_THAT(run(script).loggedUntil("end"), testing::UnorderedElementsAreArray(expected));
}

TEST_F(ScriptEnvironmentTest, aTimerKeepsItsInterval) {
  App app =
      run("var begin = Date.now(), left = 3;"
          "setTimeout(100, function() {"
          "  if (--left > 0) return true; log(Date.now() - begin); });");
  EXPECT_GE(std::stoi(app.logged()), 299);
}

TEST_F(ScriptEnvironmentTest, aTimersFunctionIsItsOwnReceiverAndGetsNothing) {
  App app =
      run("function fired() { log(this === fired); log(arguments.length); }"
          "setTimeout(0, fired);");
  EXPECT_THAT(app.logged(2), ElementsAre("true", "0"));
}

TEST_F(ScriptEnvironmentTest, aTimerMaySetTimers) {
  App app = run("setTimeout(0, function() { setTimeout(0, function() { log('inner'); }); });");
  EXPECT_EQ(app.logged(), "inner");
}

TEST_F(ScriptEnvironmentTest, promisesRunBehindEachCallback) {
  EXPECT_THAT(run("setTimeout(0, function() { Promise.resolve().then(function() { log('then'); });"
                  " log('timer'); }); setTimeout(20, function() { log('end'); });")
                  .loggedUntil("end"),
              ElementsAre("timer", "then"));
}

// --- random, uuid, timestamp

TEST_F(ScriptEnvironmentTest, randomIsAWholeNumberAndLogged) {
  App app =
      run("log(morvik.random(1, 'x')); for (var i = 0; i < 100; ++i) {"
          " var r = morvik.random();"
          " if (typeof r != 'number' || r < 0 || r >= 10000000 || r != Math.floor(r))"
          "   log('bad: ' + r); } log('end');");
  const std::string first = app.logged();
  EXPECT_THAT(first, MatchesRegex("[0-9]{1,7}"));
  EXPECT_EQ(app.waitForLog("rand : " + first).priority, LOG_DEBUG);
  EXPECT_THAT(app.loggedUntil("end"), ElementsAre());
}

TEST_F(ScriptEnvironmentTest, uuidIsAFreshLowerCaseText) {
  App app = run("log(typeof uuid()); for (var i = 0; i < 50; ++i) log(uuid('x')); log('end');");
  EXPECT_EQ(app.logged(), "string");
  const std::vector<std::string> ids = app.loggedUntil("end");
  EXPECT_THAT(ids, testing::Each(MatchesRegex(kUuid)));
  EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), 50U);
}

TEST_F(ScriptEnvironmentTest, timestampIsTheSecondsAsText) {
  const std::time_t before = std::time(nullptr);
  App app = run("var t = timestamp({}); log(typeof t); log(t); log(t + 1 == t + '1');");
  EXPECT_EQ(app.logged(), "string");
  const std::string text = app.logged();
  EXPECT_THAT(text, MatchesRegex("[0-9]+"));
  EXPECT_GE(std::stoll(text), before);
  EXPECT_LE(std::stoll(text), std::time(nullptr));
  EXPECT_EQ(app.logged(), "true");
}

TEST_F(ScriptEnvironmentTest, twoApplicationsDoNotDrawTheSameNumbers) {
  apps.app("app", {}, "log([Math.random(), Math.random()].join()); log(uuid());");
  App one = launch("app");
  App two = launch("app");
  EXPECT_NE(one.logged(), two.logged());
  EXPECT_NE(one.logged(), two.logged());
}

// --- what the globals are

TEST_F(ScriptEnvironmentTest, aScriptsGlobalsAreItsOwn) {
  apps.app("app", {}, "log(typeof mine); var mine = 1; morvik.mine = 2; log = log;");
  EXPECT_EQ(launch("app").logged(), "undefined");
  EXPECT_EQ(launch("app").logged(), "undefined");
}

}  // namespace
}  // namespace morvik::test
