// What becomes of a script's uncaught exceptions: one report in the log, nothing on standard
// output, and the application goes on.
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

struct Report {
  std::string name;
  std::string mainJs;
  std::vector<std::string> warnings;
};

void PrintTo(const Report& row, std::ostream* stream) { *stream << row.name; }

const std::vector<Report> kReports{
    {"plainText", "throw 'plain';", {"main.js:1: plain", "throw 'plain';", "^"}},
    {"number", "\n\n  throw 42;", {"main.js:3: 42", "  throw 42;", "  ^"}},
    {"nothing", "throw undefined;", {"main.js:1: undefined", "throw undefined;", "^"}},
    {"error",
     "var a = 1; throw new Error('boom');",
     {"main.js:1: Error: boom", "var a = 1; throw new Error('boom');", "           ^",
      "Error: boom\n    at main.js:1:18"}},
    {"missingName",
     "var a = 1;\nnobody();",
     {"main.js:2: ReferenceError: nobody is not defined", "nobody();", "^",
      "ReferenceError: nobody is not defined\n    at main.js:2:1"}},
    {"insideAFunction",
     "function inner() {\n  null.x;\n}\ninner();",
     {"main.js:2: TypeError: Cannot read properties of null (reading 'x')", "  null.x;", "       ^",
      "TypeError: Cannot read properties of null (reading 'x')\n"
      "    at inner (main.js:2:8)\n    at main.js:4:1"}},
    {"syntaxError",
     "var a = 1;\nvar b = );",
     {"main.js:2: SyntaxError: Unexpected token ')'", "var b = );", "        ^",
      "SyntaxError: Unexpected token ')'"}},
    {"longMark",
     "var abc; one three;",
     {"main.js:1: SyntaxError: Unexpected identifier", "var abc; one three;", "             ^^^^^",
      "SyntaxError: Unexpected identifier"}},
    {"noText",
     "throw {toString: function() { throw 1; }};",
     {"main.js:1: <string conversion failed>", "throw {toString: function() { throw 1; }};", "^"}},
    {"symbol",
     "throw Symbol('s');",
     {"main.js:1: <string conversion failed>", "throw Symbol('s');", "^"}},
};

class ReportTest : public SystemTest, public testing::WithParamInterface<Report> {};

// A script that fails at once is reported and then ended like any other that is not interactive.
TEST_P(ReportTest, isWarningsInOrderAndTheLoopStillRuns) {
  startHost({.shortTimersFrom = 10000});
  apps.app("app", {}, GetParam().mainJs);
  const App app = launch("app");
  app.waitUntilEnded();
  std::vector<std::string> expected{kNoParams};
  expected.insert(expected.end(), GetParam().warnings.begin(), GetParam().warnings.end());
  expected.emplace_back(kAutokill);
  EXPECT_THAT(app.warnings(), ElementsAreArray(expected));
  host().killAll();
  EXPECT_EQ(host().output().awaitEnd(), "");
}

INSTANTIATE_TEST_SUITE_P(Exception, ReportTest, testing::ValuesIn(kReports),
                         [](const auto& row) { return row.param.name; });

class ExceptionTest : public DeviceTest {
 protected:
  std::ptrdiff_t timesLogged(const std::string& text) const {
    return std::ranges::count(app.texts(), text);
  }
  void expectNothingOnStandardOutput() {
    host().killAll();
    EXPECT_EQ(host().output().awaitEnd(), "");
  }
  // The script logs these texts and then "end", and the log has no warning of it.
  void expectNotReported(const std::string& script, const std::vector<std::string>& texts) {
    app = run(script);
    EXPECT_EQ(app.loggedUntil("end"), texts);
    EXPECT_THAT(app.warnings(), ElementsAre(kNoParams));
  }
  // Each text once in the log, and nowhere else.
  void expectReportedOnce(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) EXPECT_EQ(timesLogged(text), 1) << text;
    expectNothingOnStandardOutput();
  }
};

TEST_F(ExceptionTest, anExceptionInATimerIsReportedOnceAndEndsTheTimer) {
  runToEnd(
      "setTimeout(5, function() { throw new Error('ticked'); });\n"
      "var ticks = 0;\n"
      "setTimeout(10, function() { if (++ticks == 4) log('end'); return true; });");
  EXPECT_THAT(app.warnings(), SizeIs(1 + 4));
  expectReportedOnce({"main.js:1: Error: ticked"});
}

TEST_F(ExceptionTest, anExceptionInAReplyFunctionIsReportedOnceAndTheApplicationGoesOn) {
  interactive(
      "var calls = 0;\n"
      "morvik.led.light('red', function(code) {\n"
      "  if (++calls == 1) throw new Error('heard ' + code);\n"
      "  log(code);\n"
      "});");
  const zeph::ZephMsg request = receiveAndReply("OK");
  device.event(request, "TERMINATED");
  EXPECT_EQ(app.logged(), "TERMINATED");
  EXPECT_THAT(app.warnings(), SizeIs(1 + 4));
  expectReportedOnce({"main.js:3: Error: heard OK"});
}

TEST_F(ExceptionTest, anExceptionWhenInteractiveModeIsGrantedIsReportedOnce) {
  interactive("setTimeout(0, function() { log('alive'); }); throw 'granted';");
  EXPECT_EQ(app.logged(), "alive");
  expectReportedOnce({"main.js:1: granted"});
}

TEST_F(ExceptionTest, anExceptionInAnInfoFunctionIsReportedOnce) {
  interactive("morvik.info(function() { throw 'informed'; }); ping(log);");
  zeph::ZephMsg reply = replyTo(device.receive());
  reply.mutable_morvikinfo_response();
  device.send(reply);
  receiveAndReply("OK");
  EXPECT_EQ(app.logged(), "OK");
  expectReportedOnce({"main.js:1: informed"});
}

TEST_F(ExceptionTest, aRejectedPromiseIsReportedOnce) {
  runToEnd(
      "\nPromise.reject(new Error('rejected'));\n"
      "(async function() { throw 'thrown'; })();\n"
      "setTimeout(5, function() { Promise.reject(new Error('later')); });\n"
      "setTimeout(20, function() { log('end'); });");
  expectReportedOnce(
      {"main.js:2: Error: rejected", "main.js:3: thrown", "main.js:4: Error: later"});
}

TEST_F(ExceptionTest, aRejectedPromiseWithAHandlerIsNotReported) {
  expectNotReported(
      "Promise.reject(new Error('handled')).catch(function(e) { log(e.message); });\n"
      "(async function() { try { await Promise.reject('x'); } catch (e) { log(e); } })();\n"
      "setTimeout(20, function() { log('end'); });",
      {"handled", "x"});
}

TEST_F(ExceptionTest, anExceptionThatTheScriptCatchesIsNotReported) {
  expectNotReported(
      "try { throw new Error('mine'); } catch (e) { log(e.message); }\n"
      "log(caught(log)); log('end');",
      {"mine", "string: Wrong arguments"});
}

TEST_F(ExceptionTest, aStackTraceHasTenFrames) {
  runToEnd(
      "function deeper(n) { if (n == 0) throw new Error('deep'); deeper(n - 1); }\n"
      "setTimeout(0, function() { deeper(50); });\n"
      "setTimeout(20, function() { log('end'); });");
  const std::string trace = app.warnings().back();
  EXPECT_THAT(trace, StartsWith("Error: deep\n    at deeper (main.js:1:"));
  EXPECT_EQ(std::ranges::count(trace, '\n'), 10);
}

TEST_F(ExceptionTest, aStackOverflowIsAnExceptionLikeOthers) {
  runToEnd("setTimeout(20, function() { log('end'); });\n(function deeper() { deeper(); })();");
  EXPECT_EQ(timesLogged("main.js:2: RangeError: Maximum call stack size exceeded"), 1);
}

// The mark under a source line has room for 1023 columns; longer lines must not harm anything.
TEST_F(ExceptionTest, aVeryLongSourceLineIsReported) {
  const std::string blanks(5000, ' ');
  app = run("setTimeout(0, function() { log('end'); });\n" + blanks + "throw 'far right';");
  EXPECT_EQ(app.logged(), "end");
  const std::vector<std::string> warnings = app.warnings();
  ASSERT_THAT(warnings, SizeIs(4));
  EXPECT_EQ(warnings[1], "main.js:2: far right");
  EXPECT_EQ(warnings[2], blanks + "throw 'far right';");
}

TEST_F(ExceptionTest, refusalsOfTheHostAreReportedAsPlainTexts) {
  runToEnd("\nsetTimeout(0, function() { log('end'); });\nlog();");
  EXPECT_THAT(app.warnings(),
              ElementsAre(kNoParams, "main.js:3: Wrong arguments", "log();", StartsWith("^")));
  EXPECT_EQ(app.waitForLog("main.js:3: Wrong arguments").priority, LOG_WARNING);
}

}  // namespace
}  // namespace morvik::test
