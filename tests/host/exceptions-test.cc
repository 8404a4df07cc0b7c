// That each exception that nobody catches is reported once, and in which words.
#include "host/exceptions.h"

#include <csignal>

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class ExceptionsTest : public ScriptTest {
 protected:
  // Runs text as main.js and reports what it throws. A TryCatch without messages stands for an
  // exception about which the engine has nothing to tell.
  void report(const std::string& source, bool withMessage = true) {
    const v8::Context::Scope entered(context());
    v8::TryCatch tryCatch(isolate());
    tryCatch.SetCaptureMessage(withMessage);
    v8::ScriptOrigin origin(isolate(), toScript("main.js"));
    v8::Local<v8::Script> script;
    if (v8::Script::Compile(context(), toScript(source), &origin).ToLocal(&script)) {
      ASSERT_TRUE(script->Run(context()).IsEmpty());
    }
    reportException(tryCatch);
  }
};

TEST_F(ExceptionsTest, anExceptionIsReportedWithPlaceLineUnderlineAndStack) {
  const struct {
    const char* source;
    std::vector<std::string> lines;
  } rows[] = {
      {"throw 'plain';", {"main.js:1: plain", "throw 'plain';", "^"}},
      {"\n\n  throw 12", {"main.js:3: 12", "  throw 12", "  ^"}},
      {"throw undefined", {"main.js:1: undefined", "throw undefined", "^"}},
      {"throw null", {"main.js:1: null", "throw null", "^"}},
      {"throw ''", {"main.js:1: ", "throw ''", "^"}},
      {"throw 'caf\\u00e9'", {"main.js:1: caf\xc3\xa9", "throw 'caf\\u00e9'", "^"}},
      {"throw '%s%n'", {"main.js:1: %s%n", "throw '%s%n'", "^"}},
      {"throw {}", {"main.js:1: [object Object]", "throw {}", "^"}},
      {"throw {stack: 'own stack'}",
       {"main.js:1: [object Object]", "throw {stack: 'own stack'}", "^", "own stack"}},
      {"throw {stack: ''}", {"main.js:1: [object Object]", "throw {stack: ''}", "^"}},
      {"throw Symbol('s')", {"main.js:1: <string conversion failed>", "throw Symbol('s')", "^"}},
      {"throw {toString() { throw 1; }}",
       {"main.js:1: <string conversion failed>", "throw {toString() { throw 1; }}", "^"}},
      {"throw {get stack() { throw 1; }}",
       {"main.js:1: [object Object]", "throw {get stack() { throw 1; }}", "^"}},
      {"throw {stack: Symbol()}",
       {"main.js:1: [object Object]", "throw {stack: Symbol()}", "^",
        "<string conversion failed>"}},
      {"void [1, missing];",
       {"main.js:1: ReferenceError: missing is not defined", "void [1, missing];", "         ^",
        "ReferenceError: missing is not defined\n    at main.js:1:10"}},
      {"function f() {\n  null.x;\n}\nf();",
       {"main.js:2: TypeError: Cannot read properties of null (reading 'x')", "  null.x;",
        "       ^",
        "TypeError: Cannot read properties of null (reading 'x')\n    at f (main.js:2:8)\n    at "
        "main.js:4:1"}},
      {"var = 1;",
       {"main.js:1: SyntaxError: Unexpected token '='", "var = 1;", "    ^",
        "SyntaxError: Unexpected token '='"}},
      {"var a = 'never closed",
       {"main.js:1: SyntaxError: Invalid or unexpected token", "var a = 'never closed",
        "        ^^^^^^^^^^^^^", "SyntaxError: Invalid or unexpected token"}},
      {"let abc; let abc;",
       {"main.js:1: SyntaxError: Identifier 'abc' has already been declared", "let abc; let abc;",
        "             ^", "SyntaxError: Identifier 'abc' has already been declared"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    log.clear();
    report(row.source);
    EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), ElementsAreArray(row.lines));
    EXPECT_EQ(log.lines().size(), row.lines.size());
  }
}

TEST_F(ExceptionsTest, anUnderlineMayBeLongerThanAnyBuffer) {
  const std::string blanks(3000, ' ');
  report(blanks + "missing");
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING).at(2), blanks + "^");
}

TEST_F(ExceptionsTest, aStackHasUpToTenFrames) {
  const v8::Context::Scope entered(context());
  v8::TryCatch tryCatch(isolate());
  auto script = v8::Script::Compile(
      context(), toScript("(function f(n) { if (n > 0) f(n - 1); else throw 'deep'; })(30)"));
  EXPECT_TRUE(script.ToLocalChecked()->Run(context()).IsEmpty());
  EXPECT_EQ(tryCatch.Message()->GetStackTrace()->GetFrameCount(), 10);
}

TEST_F(ExceptionsTest, anExceptionWithoutAMessageIsFatal) {
  EXPECT_EXIT(report("throw 'nothing to tell'", false), testing::KilledBySignal(SIGTRAP),
              "fatal: nothing to tell\n\n");
}

TEST_F(ExceptionsTest, aRejectionThatNobodyHandlesIsReportedOnce) {
  const struct {
    const char* source;
    const char* text;
  } rows[] = {
      {"Promise.reject('rejected')", "rejected"},
      {"Promise.reject(new Error('rejected'))", "Error: rejected"},
      {"Promise.reject()", "undefined"},
      {"Promise.reject(Symbol())", "<string conversion failed>"},
      {"new Promise(() => { throw 'rejected'; })", "rejected"},
      {"(async function() { throw 'rejected'; })()", "rejected"},
      {"(async function() { await 1; throw 'rejected'; })()", "rejected"},
      {"Promise.resolve().then(() => { throw 'rejected'; })", "rejected"},
      {"Promise.reject('rejected').finally(() => {})", "rejected"},
      {"Promise.reject({get stack() { throw 1; }, toString() { return 'rejected'; }})", "rejected"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    log.clear();
    testing::internal::CaptureStdout();
    run(row.source);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
    ASSERT_GE(warnings.size(), 3U);
    EXPECT_THAT(warnings[0], testing::MatchesRegex("[^:]*:[0-9]+: .*"));
    EXPECT_THAT(warnings[0], EndsWith(std::string(": ") + row.text));
    EXPECT_LE(warnings.size(), 4U);
    run("0");
    EXPECT_EQ(log.lines().size(), warnings.size());
  }
}

TEST_F(ExceptionsTest, aRejectionHandledInTheSameRunIsNone) {
  for (const char* source :
       {"Promise.reject(1).catch(() => {})", "var p = Promise.reject(1); p.then(0, () => {})",
        "(async () => { try { await Promise.reject(1); } catch (e) {} })()",
        "var p = Promise.reject(1); Promise.resolve().then(() => p.catch(() => {}))",
        "Promise.allSettled([Promise.reject(1)])"}) {
    SCOPED_TRACE(source);
    run(source);
    EXPECT_THAT(log.lines(), ElementsAre());
  }
}

TEST_F(ExceptionsTest, aRejectionHandledTooLateWasReportedAndIsNotAgain) {
  run("var p = Promise.reject('early')");
  const std::size_t reported = log.lines().size();
  EXPECT_EQ(reported, 3U);
  run("p.catch(() => {})");
  EXPECT_EQ(log.lines().size(), reported);
}

// Turning a reason into text may run script, which must not keep the report busy for ever.
TEST_F(ExceptionsTest, aRejectionFromWithinAReportWaitsForTheNextRun) {
  run("var n = 0; var again = {toString() { Promise.reject(again); return 'again' + ++n; }};"
      "Promise.reject(again)");
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING).size(), 3U);
  run("0");
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING).size(), 6U);
  run("delete again.toString; again.toString = () => 'last'; 0");
  run("0");
}

TEST_F(ExceptionsTest, rejectionsAreReportedInTheirOrderAfterTheRun) {
  run("Promise.reject('a'); Promise.reject('b'); log('still running')");
  const auto texts = log.texts();
  ASSERT_EQ(texts.size(), 7U);
  EXPECT_EQ(texts[0], "JSLOG: still running");
  EXPECT_THAT(texts[1], EndsWith(": a"));
  EXPECT_THAT(texts[4], EndsWith(": b"));
}

class FinaliserTest : public ExceptionsTest {
 protected:
  // Lets `callback` be the finaliser of something that is gone.
  void finalise(const std::string& callback) {
    run("var registry = new FinalizationRegistry(" + callback +
        "); (function() { registry.register({}, 'gone'); })(); 0");
    isolate()->LowMemoryNotification();
    run("0");
  }
};

TEST_F(FinaliserTest, runsWhenTheScriptDoesNot) {
  finalise("value => log(value)");
  EXPECT_THAT(logged(), ElementsAre("gone"));
}

TEST_F(FinaliserTest, thatThrowsIsReportedOnce) {
  testing::internal::CaptureStdout();
  finalise("() => { throw 'thrown'; }");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
  ASSERT_EQ(warnings.size(), 3U);
  EXPECT_THAT(warnings[0], EndsWith(": thrown"));
  run("0");
  EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(FinaliserTest, thatThrowsWhatThrowsAgainIsStillReportedOnce) {
  finalise("() => { throw {toString() { return 'odd'; }, get stack() { throw 'more'; }}; }");
  const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
  ASSERT_EQ(warnings.size(), 3U);
  EXPECT_THAT(warnings[0], EndsWith(": odd"));
}

TEST_F(FinaliserTest, thatRejectsIsReportedAsWell) {
  finalise("() => { Promise.reject('rejected'); }");
  const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
  ASSERT_EQ(warnings.size(), 3U);
  EXPECT_THAT(warnings[0], EndsWith(": rejected"));
}

}  // namespace
}  // namespace morvik::test
