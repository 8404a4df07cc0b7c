// log, exit, setTimeout, uuid, timestamp and random.
#include "host/globals.h"

#include <cstdlib>
#include <ctime>

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class GlobalsTest : public ScriptTest {};

TEST_F(GlobalsTest, logWritesAnyValueAsText) {
  const struct {
    const char* argument;
    std::string text;
  } rows[] = {
      {"'text'", "text"},
      {"''", ""},
      {"undefined", "undefined"},
      {"null", "null"},
      {"-1.5", "-1.5"},
      {"true", "true"},
      {"{}", "[object Object]"},
      {"[1, [2, 3]]", "1,2,3"},
      {"{toString() { return 'own'; }}", "own"},
      {"'%s %d %n'", "%s %d %n"},
      {"'a\\0b'", "a b"},
      {"'a\\nb'", "a\nb"},
      {"'\\u0141'", "A"},
      {"'\\u00e9'", "\xe9"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.argument);
    log.clear();
    EXPECT_EQ(run(std::string("log(") + row.argument + ")"), "undefined");
    EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_MESSAGE, "JSLOG: " + row.text}));
  }
}

TEST_F(GlobalsTest, logTakesExactlyOneValue) {
  for (const char* call : {"log()", "log(1, 2)", "log('a', undefined)", "log(1, 2, 3)"}) {
    EXPECT_EQ(run(call), "throws: Wrong arguments");
  }
  EXPECT_EQ(run("log({toString() { throw 'no text'; }})"), "throws: no text");
  EXPECT_EQ(run("log(Symbol())"), "throws: TypeError: Cannot convert a Symbol value to a string");
  EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(GlobalsTest, exitEndsTheLoopWhenTheScriptReturns) {
  run("setTimeout(0, function() { log(exit()); log('goes on'); })");
  g_main_loop_run(instance.mainLoop);
  EXPECT_THAT(log.texts(),
              ElementsAre("SetTimeout: 0", "EXIT", "JSLOG: undefined", "JSLOG: goes on"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "EXIT"));
}

TEST_F(GlobalsTest, exitWithAnArgumentIsRefusedAndLogged) {
  for (const char* call : {"exit(0)", "exit(undefined)", "exit(1, 2)"}) {
    log.clear();
    EXPECT_EQ(run(call), "throws: Wrong arguments");
    EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_DEBUG, "EXIT"}));
  }
}

TEST_F(GlobalsTest, refusalsArePlainStrings) {
  for (const char* call : {"log()", "exit(0)", "setTimeout()"}) {
    EXPECT_EQ(run(std::string("try { ") + call + "; } catch (e) { typeof e; }"), "string");
  }
}

TEST_F(GlobalsTest, setTimeoutTakesANumberAndAFunction) {
  for (const char* arguments :
       {"", "1", "function(){}", "1, 2", "'100', function(){}", "'', function(){}",
        "function(){}, 100", "undefined, function(){}", "null, function(){}",
        "new Number(1), function(){}", "{}, function(){}", "1, 'log(1)'", "1, {}", "1, null",
        "1, function(){}, 3", "1n, function(){}", "true, function(){}"}) {
    SCOPED_TRACE(arguments);
    EXPECT_EQ(run(std::string("setTimeout(") + arguments + ")"),
              "throws: Must be setTimeout(int,function)");
  }
  EXPECT_THAT(log.lines(), ElementsAre());
}

// A timer's interval is looked up in the loop, so that nobody has to wait for it.
TEST_F(GlobalsTest, setTimeoutCutsItsNumberToAWholeOne) {
  const struct {
    const char* ms;
    int logged;
    guint interval;
  } rows[] = {
      {"0", 0, 0},
      {"100", 100, 100},
      {"2.9", 2, 2},
      {"0.5", 0, 0},
      {"NaN", 0, 0},
      {"Infinity", 0, 0},
      {"4294967297", 1, 1},
      {"2147483647", 2147483647, 2147483647},
      {"-1", -1, 4294967295},  // counted without a sign: weeks
      {"-2.9", -2, 4294967294},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ms);
    log.clear();
    const auto nothing = [](gpointer) -> gboolean { return G_SOURCE_REMOVE; };
    const guint before = g_idle_add(nothing, nullptr);  // sources are numbered one after the other
    g_source_remove(before);
    const gint64 start = g_get_monotonic_time();
    EXPECT_EQ(run(std::string("setTimeout(") + row.ms + ", function() {})"), "undefined");
    const gint64 end = g_get_monotonic_time();
    EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_DEBUG,
                                                 "SetTimeout: " + std::to_string(row.logged)}));
    GSource* source = g_main_context_find_source_by_id(nullptr, before + 1);
    ASSERT_NE(source, nullptr);
    EXPECT_GE(g_source_get_ready_time(source), start + row.interval * gint64{1000});
    EXPECT_LE(g_source_get_ready_time(source), end + row.interval * gint64{1000});
    g_source_destroy(source);
  }
}

TEST_F(GlobalsTest, aTimerOfZeroFiresOnTheNextTurn) {
  run("setTimeout(0, function() { log('fired'); })");
  EXPECT_THAT(logged(), ElementsAre());
  g_main_context_iteration(nullptr, FALSE);
  EXPECT_THAT(logged(), ElementsAre("fired"));
}

TEST_F(GlobalsTest, aTimerCallsItsFunctionWithItselfAsThisAndNothingElse) {
  run("setTimeout(0, function f() { log((this === f) + ' ' + arguments.length); })");
  runLoopUntil([this] { return !logged().empty(); });
  EXPECT_THAT(logged(), ElementsAre("true 0"));
}

TEST_F(GlobalsTest, aTimerStaysForExactlyTrueOnly) {
  const struct {
    const char* result;
    gboolean stays;
  } rows[] = {
      {"true", TRUE},
      {"1 == 1", TRUE},
      {"false", FALSE},
      {"undefined", FALSE},
      {"1", FALSE},
      {"'true'", FALSE},
      {"{}", FALSE},
      {"null", FALSE},
      {"new Boolean(true)", FALSE},
      {"Promise.resolve(true)", FALSE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.result);
    const v8::Context::Scope entered(context());
    run(std::string("var f = function() { return ") + row.result + "; }");
    const auto function = context()->Global()->Get(context(), toScript("f")).ToLocalChecked();
    ScriptFunction holder(function.As<v8::Function>());
    EXPECT_EQ(timerFired(&holder), row.stays);
  }
}

TEST_F(GlobalsTest, aTimerRepeatsUntilItsFunctionReturnsSomethingElse) {
  run("var n = 0; setTimeout(1, function() { log(++n); return n < 3; });"
      "setTimeout(1, function() { log('once'); return 1; })");
  runLoopUntil([this] { return logged().size() == 4; });
  for (int i = 0; i < 3; ++i) g_main_context_iteration(nullptr, FALSE);
  EXPECT_THAT(logged(), testing::UnorderedElementsAre("1", "2", "3", "once"));
}

TEST_F(GlobalsTest, aTimerThatThrowsIsReportedAndEnds) {
  run("var n = 0; setTimeout(0, function() { log(++n); throw 'thrown'; })");
  runLoopUntil([this] { return !logged().empty(); });
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING).at(0), testing::EndsWith(": thrown"));
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING).size(), 3U);  // place and text, line, underline
  for (int i = 0; i < 3; ++i) g_main_context_iteration(nullptr, FALSE);
  EXPECT_THAT(logged(), ElementsAre("1"));
}

TEST_F(GlobalsTest, randomIsTheGeneratorsNumberWithinItsRange) {
  std::srand(11);
  int expected[200];
  for (int& number : expected) number = std::rand() % 10000000;
  std::srand(11);
  for (const int number : expected) {
    log.clear();
    EXPECT_EQ(run("morvik.random('ignored', {})"), std::to_string(number));
    EXPECT_THAT(log.lines(),
                ElementsAre(LogLine{G_LOG_LEVEL_DEBUG, "rand : " + std::to_string(number)}));
  }
  EXPECT_EQ(run("Number.isInteger(morvik.random())"), "true");
}

TEST_F(GlobalsTest, uuidIsAFreshLowerCaseText) {
  EXPECT_THAT(run("uuid()"), MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
  EXPECT_EQ(run("uuid() === uuid(1, 2)"), "false");
  EXPECT_EQ(run("typeof uuid()"), "string");
}

TEST_F(GlobalsTest, timestampIsTheSecondsAsText) {
  const std::time_t before = std::time(nullptr);
  const std::time_t told = std::stol(run("timestamp(1, 2)"));
  EXPECT_GE(told, before);
  EXPECT_LE(told, std::time(nullptr));
  EXPECT_EQ(run("typeof timestamp()"), "string");
  EXPECT_THAT(run("timestamp() + 1"), MatchesRegex("[0-9]{10}1"));
}

TEST_F(GlobalsTest, theGlobalObjectHoldsTheInstanceInItsOneField) {
  EXPECT_EQ(context()->Global()->InternalFieldCount(), 1);
  EXPECT_EQ(context()->Global()->GetAlignedPointerFromInternalField(0), &instance);
}

}  // namespace
}  // namespace morvik::test
