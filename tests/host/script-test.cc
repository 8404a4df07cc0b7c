// The one header between the engine and the rest: conversions by a table of odd values, refusals,
// and kept functions.
#include "host/script.h"

#include <csignal>
#include <cstdint>

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

// What the last exposed function has read.
struct Read {
  std::string ascii;
  std::string utf8;
  std::int32_t int32 = 0;
  std::uint32_t uint32 = 0;
  bool threw = false;
};
Read lastRead;

void readText(const Args& args) {
  ArgumentReader reader(args);
  lastRead.ascii = reader.ascii(0);
  lastRead.utf8 = reader.utf8(0);
  lastRead.threw = reader.threw();
}

void readNumber(const Args& args) {
  ArgumentReader reader(args);
  lastRead.int32 = reader.int32(0);
  lastRead.uint32 = reader.uint32(0);
  lastRead.threw = reader.threw();
}

class HostScriptTest : public ScriptTest {
 protected:
  HostScriptTest() {
    expose("readText", readText);
    expose("readNumber", readNumber);
  }

  v8::Local<v8::Function> function(const std::string& expression) {
    run("var f = " + expression);
    const v8::Context::Scope entered(context());
    return context()->Global()->Get(context(), toScript("f")).ToLocalChecked().As<v8::Function>();
  }

  ScriptFunction kept(const std::string& expression) {
    const auto local = function(expression);
    const v8::Context::Scope entered(context());
    return ScriptFunction(local);
  }
};

TEST_F(HostScriptTest, convertsOddValuesAsTheEngineDoes) {
  const struct {
    const char* argument;
    std::string ascii;
    std::string utf8;
    std::int32_t int32;
    std::uint32_t uint32;
  } rows[] = {
      {"", "undefined", "undefined", 0, 0},
      {"undefined", "undefined", "undefined", 0, 0},
      {"null", "null", "null", 0, 0},
      {"true", "true", "true", 1, 1},
      {"false", "false", "false", 0, 0},
      {"5", "5", "5", 5, 5},
      {"-1", "-1", "-1", -1, 4294967295U},
      {"-0", "0", "0", 0, 0},
      {"2.9", "2.9", "2.9", 2, 2},
      {"-2.9", "-2.9", "-2.9", -2, 4294967294U},
      {"NaN", "NaN", "NaN", 0, 0},
      {"Infinity", "Infinity", "Infinity", 0, 0},
      {"2147483648", "2147483648", "2147483648", INT32_MIN, 2147483648U},
      {"4294967297", "4294967297", "4294967297", 1, 1},
      {"1e21", "1e+21", "1e+21", -559939584, 3735027712U},
      {"'abc'", "abc", "abc", 0, 0},
      {"''", "", "", 0, 0},
      {"' 12 '", " 12 ", " 12 ", 12, 12},
      {"'0x10'", "0x10", "0x10", 16, 16},
      {"'12px'", "12px", "12px", 0, 0},
      {"{}", "[object Object]", "[object Object]", 0, 0},
      {"[]", "", "", 0, 0},
      {"[7]", "7", "7", 7, 7},
      {"[1, 2]", "1,2", "1,2", 0, 0},
      {"{toString() { return 'x'; }, valueOf() { return 5; }}", "x", "x", 5, 5},
      {"new Number(3)", "3", "3", 3, 3},
      {"function() {}", "function() {}", "function() {}", 0, 0},
      {"'a\\0b'", "a b", std::string("a\0b", 3), 0, 0},
      {"'\\u00e9'", "\xe9", "\xc3\xa9", 0, 0},
      {"'\\u0141'", "A", "\xc5\x81", 0, 0},
      {"'\\u0100'", " ", "\xc4\x80", 0, 0},  // a low byte of zero becomes a blank as well
      {"'\\ud83d\\ude00'", std::string("= "), "\xf0\x9f\x98\x80", 0, 0},
      {"'\\ud83d'", "=", "\xed\xa0\xbd", 0, 0},  // half a pair
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.argument);
    EXPECT_EQ(run(std::string("readText(") + row.argument + ")"), "undefined");
    EXPECT_EQ(lastRead.ascii, row.ascii);
    EXPECT_EQ(lastRead.utf8, row.utf8);
    EXPECT_FALSE(lastRead.threw);
    EXPECT_EQ(run(std::string("readNumber(") + row.argument + ")"), "undefined");
    EXPECT_EQ(lastRead.int32, row.int32);
    EXPECT_EQ(lastRead.uint32, row.uint32);
    EXPECT_FALSE(lastRead.threw);
  }
}

TEST_F(HostScriptTest, aConversionThatThrowsReachesTheScript) {
  const char* const noText = "throws: TypeError: Cannot convert a Symbol value to a string";
  const char* const noNumber = "throws: TypeError: Cannot convert a Symbol value to a number";
  const struct {
    const char* call;
    const char* result;
  } rows[] = {
      {"readText(Symbol('s'))", noText},
      {"readNumber(Symbol('s'))", noNumber},
      {"readText({toString() { throw 'no text'; }})", "throws: no text"},
      {"readNumber({valueOf() { throw 'no number'; }})", "throws: no number"},
      {"readNumber({toString() { throw 'no text'; }})", "throws: no text"},
      {"readText(Object.create(null))",
       "throws: TypeError: Cannot convert object to primitive value"},
      {"readNumber(Object.create(null))",
       "throws: TypeError: Cannot convert object to primitive value"},
      {"readNumber(1n)", "throws: TypeError: Cannot convert a BigInt value to a number"},
      {"readText([Symbol()])", noText},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    lastRead = {};
    EXPECT_EQ(run(row.call), row.result);
    EXPECT_TRUE(lastRead.threw);
    EXPECT_EQ(lastRead.ascii + lastRead.utf8, "");
    EXPECT_EQ(lastRead.int32, 0);
    EXPECT_EQ(lastRead.uint32, 0U);
  }
  EXPECT_THAT(log.lines(), ElementsAre());  // the script has caught it
}

TEST_F(HostScriptTest, theFirstConversionThatThrowsEndsTheReading) {
  expose("readTwo", [](const Args& args) {
    ArgumentReader reader(args);
    lastRead.utf8 = reader.ascii(0);
    lastRead.utf8 += reader.utf8(1);
    lastRead.int32 = reader.int32(1);
    lastRead.uint32 = reader.uint32(1);
  });
  EXPECT_EQ(run("readTwo({toString() { throw 'first'; }}, {toString() { log('touched'); }})"),
            "throws: first");
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_EQ(lastRead.utf8, "");
}

TEST_F(HostScriptTest, aRefusalIsAPlainString) {
  expose("refuse", [](const Args& args) { throwText(args.GetIsolate(), "Wrong arguments"); });
  EXPECT_EQ(run("refuse()"), "throws: Wrong arguments");
  EXPECT_EQ(run("try { refuse(); } catch (e) { typeof e; }"), "string");
}

TEST_F(HostScriptTest, theInstanceIsFoundFromEveryFunction) {
  static MorvikData* found;
  expose("find", [](const Args& args) { found = &currentInstance(args.GetIsolate()); });
  for (const char* call : {"find()", "find.call(null)", "[1].forEach(find)",
                           "Promise.resolve().then(find)", "new find()"}) {
    SCOPED_TRACE(call);
    found = nullptr;
    run(call);
    EXPECT_EQ(found, &instance);
  }
}

// An object from an event leads a script to the functions of a context that is no application's.
// The engine lets it make no code there.
TEST_F(HostScriptTest, theInstanceIsFoundWhereverTheCallComesFrom) {
  static const MorvikData* found;
  expose("find", [](const Args& args) { found = &currentInstance(args.GetIsolate()); });
  expose("makeForeign",
         [](const Args& args) { args.GetReturnValue().Set(TemporaryContext().newObject()); });
  run("var object = makeForeign(), Other = object.constructor, OtherFunction = Other.constructor,"
      " OtherArray = Other.keys(object).constructor;");
  ASSERT_EQ(run("[Other === Object, OtherFunction === Function, OtherArray === Array].join()"),
            "false,false,false");
  EXPECT_EQ(run("OtherFunction('return this')"), "throws: TypeError: no access");
  for (const char* call :
       {"OtherFunction.prototype.call.call(find, object)",
        "OtherFunction.prototype.apply.call(find, object, [])",
        "OtherFunction.prototype.bind.call(find, object)()", "find.call(object)",
        "OtherArray.of(1, 2).map(find)", "OtherArray.from([1], find)",
        "OtherArray.prototype.sort.call([1, 2], find)", "OtherArray.of(object).forEach(find)",
        "Other.assign({}, {get x() { find(); }})", "object.toString = find; String(object)",
        "object.__defineGetter__('x', find); object.x; Reflect.get(object, 'x')",
        "object.__defineSetter__('y', find); Other.assign(object, {y: 1})",
        "Other.entries(new Proxy({}, {ownKeys() { find(); return []; }}))",
        "Other.setPrototypeOf(new Proxy({}, {setPrototypeOf() { return find() || true; }}), null)",
        "Reflect.construct(find, [], Other)", "Reflect.construct(find, [], OtherFunction)"}) {
    SCOPED_TRACE(call);
    found = nullptr;
    EXPECT_EQ(run(std::string(call) + "; 'done'"), "done");
    EXPECT_EQ(found, &instance);
  }
}

TEST_F(HostScriptTest, outsideOfAnApplicationThereIsNoInstance) {
  const auto ask = [] {
    const TemporaryContext foreign;
    currentInstance(v8::Isolate::GetCurrent());
  };
  EXPECT_EXIT(ask(), testing::KilledBySignal(SIGTRAP),
              "fatal: a function of the host was called outside of its application");
}

TEST_F(HostScriptTest, textsBecomeScriptTextsWhateverTheirBytes) {
  static const std::string texts[] = {"", "abc", "caf\xc3\xa9", std::string("a\0b", 3), "\xff"};
  expose("text", [](const Args& args) {
    const auto index = args[0].As<v8::Int32>()->Value();
    args.GetReturnValue().Set(toScript(texts[index]));
  });
  EXPECT_EQ(run("text(0) === ''"), "true");
  EXPECT_EQ(run("text(1) === 'abc'"), "true");
  EXPECT_EQ(run("text(2) === 'caf\\u00e9'"), "true");
  EXPECT_EQ(run("text(3) === 'a\\0b'"), "true");
  EXPECT_EQ(run("text(4) === '\\ufffd'"), "true");
}

TEST_F(HostScriptTest, propertiesAreSetWithoutRunningSetters) {
  expose("make", [](const Args& args) {
    const auto object = v8::Object::New(args.GetIsolate());
    for (const char* name : {"__proto__", "trap", "7", ""}) setOwn(object, name, toScript("own"));
    args.GetReturnValue().Set(object);
  });
  EXPECT_EQ(run("Object.defineProperty(Object.prototype, 'trap', {set() { log('trapped'); }});"
                "JSON.stringify(make())"),
            R"({"7":"own","__proto__":"own","trap":"own","":"own"})");
  EXPECT_THAT(logged(), ElementsAre());
}

TEST_F(HostScriptTest, aKeptFunctionIsCalledWithItselfAsThis) {
  const ScriptFunction callback =
      kept("function g(a, b) { log((this === g) + [arguments.length, a, b].join()); }");
  callback.call();
  const v8::HandleScope handles(isolate());
  callback.call({toScript("x"), toScript("y")});
  EXPECT_THAT(logged(), ElementsAre("true0,,", "true2,x,y"));
}

TEST_F(HostScriptTest, aKeptFunctionLivesWithoutItsScriptsHelp) {
  const ScriptFunction callback =
      kept("(function() { var n = 41; return () => { log(++n); }; })()");
  run("f = null");
  isolate()->LowMemoryNotification();
  callback.call();
  EXPECT_THAT(logged(), ElementsAre("42"));
}

TEST_F(HostScriptTest, onlyTheBooleanTrueIsTrue) {
  const struct {
    const char* result;
    bool isTrue;
  } rows[] = {
      {"true", true},    {"!0", true},
      {"false", false},  {"1", false},
      {"'true'", false}, {"{}", false},
      {"[]", false},     {"undefined", false},
      {"null", false},   {"new Boolean(true)", false},
      {"1n", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.result);
    EXPECT_EQ(kept(std::string("() => (") + row.result + ")").call(), row.isTrue);
  }
}

TEST_F(HostScriptTest, aKeptFunctionThatThrowsIsReportedOnceAndCountsAsFalse) {
  const ScriptFunction callback = kept("function() { throw new Error('thrown'); }");
  testing::internal::CaptureStdout();
  EXPECT_FALSE(callback.call());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
  ASSERT_EQ(warnings.size(), 4U);
  EXPECT_THAT(warnings[0], EndsWith(":1: Error: thrown"));
  EXPECT_EQ(warnings[1], "var f = function() { throw new Error('thrown'); }");
  EXPECT_EQ(warnings[2], std::string(21, ' ') + "^");
  EXPECT_THAT(warnings[3], testing::StartsWith("Error: thrown\n    at Function.f ("));
  EXPECT_EQ(log.lines().size(), 4U);
  EXPECT_FALSE(callback.call());
  EXPECT_EQ(log.lines().size(), 8U);
}

TEST_F(HostScriptTest, endlessRecursionIsAnOrdinaryException) {
  EXPECT_FALSE(kept("function g() { g(); }").call());
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING).at(0),
              EndsWith(": RangeError: Maximum call stack size exceeded"));
  EXPECT_TRUE(kept("() => true").call());
}

// An application that runs for months must not grow.
TEST_F(HostScriptTest, callsFromTheLoopLeaveNoHandlesBehind) {
  const ScriptFunction good = kept("function() { return {}; }");
  const ScriptFunction bad = kept("function() { throw 'thrown'; }");
  const int before = v8::HandleScope::NumberOfHandles(isolate());
  for (int i = 0; i < 100; ++i) {
    good.call();
    bad.call();
  }
  EXPECT_EQ(v8::HandleScope::NumberOfHandles(isolate()), before);
}

TEST_F(HostScriptTest, anObjectForAScriptIsMadeOutsideItsContext) {
  const ScriptFunction callback =
      kept("function(o) { log([o instanceof Object, JSON.stringify(o)].join()); }");
  {
    const TemporaryContext temporary;
    callback.call({temporary.newObject()});
    EXPECT_EQ(isolate()->GetCurrentContext(), temporary.context());
  }
  EXPECT_THAT(logged(), ElementsAre("false,{}"));
}

// How many contexts the engine has.
std::size_t contexts() {
  v8::HeapStatistics heap;
  v8::Isolate::GetCurrent()->GetHeapStatistics(&heap);
  return heap.number_of_native_contexts();
}

TEST_F(HostScriptTest, aContextIsMadeAheadWhereOneHasBeenNeeded) {
  { const TemporaryContext first; }  // takes one that an earlier test may have left
  const std::size_t before = contexts();
  TemporaryContext::makeSpare();
  EXPECT_EQ(contexts(), before + 1);
  TemporaryContext::makeSpare();
  { const TemporaryContext second; }
  EXPECT_EQ(contexts(), before + 1);
}

TEST_F(HostScriptTest, eachEventHasAContextThatNoScriptHasSeen) {
  const ScriptFunction callback =
      kept("function(o) { log(o.seen); Object.getPrototypeOf(o).seen = true; }");
  for (int i = 0; i < 3; ++i) {
    const TemporaryContext temporary;
    callback.call({temporary.newObject()});
    TemporaryContext::makeSpare();
  }
  EXPECT_THAT(logged(), ElementsAre("undefined", "undefined", "undefined"));
}

}  // namespace
}  // namespace morvik::test
