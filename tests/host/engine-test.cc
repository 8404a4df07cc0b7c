// The engine's set-up: its limits hold, and what it cannot go on from says so.
#include "host/engine.h"

#include <csignal>
#include <filesystem>
#include <iterator>

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class EngineTest : public ScriptTest {};

TEST_F(EngineTest, startsNoThread) {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  EXPECT_EQ(std::distance(begin(tasks), end(tasks)), 1);
}

TEST_F(EngineTest, itsHeapHasItsLimits) {
  v8::HeapStatistics facts;
  isolate()->GetHeapStatistics(&facts);
  EXPECT_GE(facts.heap_size_limit(), kMaxOldSpace);
  EXPECT_LE(facts.heap_size_limit(), kMaxOldSpace + 2 * kMaxYoungSpace);  // the engine rounds
}

TEST_F(EngineTest, aScriptThatFillsMemoryEndsItsProcess) {
  for (const char* source : {
           "var all = []; while (true) all.push({});",
           "var all = []; while (true) all.push(new Array(1000).fill(0.5));",
           "var all = []; while (true) all.push(JSON.stringify('x'.repeat(100000)));",
           "new Array(30000000).fill(1);",
       }) {
    SCOPED_TRACE(source);
    EXPECT_EXIT(run(source), KilledBySignal(SIGTRAP), "script engine out of memory: ");
  }
}

// The engine itself lets a first large object pass until the next collection.
TEST_F(EngineTest, aSingleHugeTextEndsItsProcessWhenItIsKept) {
  EXPECT_EXIT(run("var huge = 'x'.repeat(100000000); huge.charCodeAt(5); huge.indexOf('y');"),
              KilledBySignal(SIGTRAP), "script engine out of memory: ");
}

TEST_F(EngineTest, aSingleHugeTextThatIsGoneIsForgotten) {
  EXPECT_EQ(run("(function() { return 'x'.repeat(100000000).indexOf('y'); })()"), "-1");
  v8::HeapStatistics heap;
  isolate()->GetHeapStatistics(&heap);
  EXPECT_LT(heap.used_heap_size(), heap.heap_size_limit());
}

TEST_F(EngineTest, anyOtherFatalErrorEndsTheProcessAndSaysSo) {
  EXPECT_EXIT(v8::MaybeLocal<v8::Value>().ToLocalChecked(), KilledBySignal(SIGTRAP),
              "fatal: script engine failed: v8::ToLocalChecked: Empty MaybeLocal");
}

// Array buffers stand outside the heap and have a limit of their own, all together.
TEST_F(EngineTest, arrayBuffersHaveALimitInAll) {
  const struct {
    const char* source;
    const char* result;
  } rows[] = {
      {"new ArrayBuffer(10485760).byteLength", "10485760"},
      {"new ArrayBuffer(10485761)", "throws: RangeError: Array buffer allocation failed"},
      {"new ArrayBuffer(500000000)", "throws: RangeError: Array buffer allocation failed"},
      {"new ArrayBuffer(Number.MAX_SAFE_INTEGER)",
       "throws: RangeError: Array buffer allocation failed"},
      {"new SharedArrayBuffer(10485761)", "throws: RangeError: Array buffer allocation failed"},
      {"new Uint8Array(500000000)", "throws: RangeError: Array buffer allocation failed"},
      {"new Float64Array(1310721)", "throws: RangeError: Array buffer allocation failed"},
      {"new Uint8Array(new Array(10).fill(7)).join()", "7,7,7,7,7,7,7,7,7,7"},
      {"new ArrayBuffer(0).byteLength", "0"},
      {"var a = new ArrayBuffer(6000000); var b; try { b = new ArrayBuffer(6000000); }"
       "catch (e) { e.name; }",
       "RangeError"},
      // What failed took nothing, and what is there still counts.
      {"new ArrayBuffer(4000000).byteLength", "4000000"},
      {"new ArrayBuffer(4485761)", "throws: RangeError: Array buffer allocation failed"},
      {"a = null; new ArrayBuffer(10000000).byteLength", "10000000"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    EXPECT_EQ(run(row.source), row.result);
  }
}

TEST_F(EngineTest, roomThatABufferLeavesIsUsedAgainAndZero) {
  EXPECT_EQ(run("function clean() {"
                "  var bytes = new Uint8Array(8000000);"
                "  var zero = bytes[0] === 0 && bytes[7999999] === 0;"
                "  bytes[0] = bytes[7999999] = 1;"
                "  return zero;"
                "}"
                "for (var n = 0; n < 50 && clean(); ++n) {}"
                "n"),
            "50");
}

TEST_F(EngineTest, webAssemblyIsNotOffered) { EXPECT_EQ(run("typeof WebAssembly"), "undefined"); }

TEST_F(EngineTest, everyEngineHasRandomStateOfItsOwn) {
  const auto draw = [] {
    const Engine engine;
    v8::Isolate* isolate = v8::Isolate::GetCurrent();
    const v8::HandleScope handles(isolate);
    const auto context = v8::Context::New(isolate);
    const v8::Context::Scope entered(context);
    const auto source = v8::String::NewFromUtf8Literal(isolate, "[Math.random(), Math.random()]");
    const auto script = v8::Script::Compile(context, source).ToLocalChecked();
    return std::string(*v8::String::Utf8Value(isolate, script->Run(context).ToLocalChecked()));
  };
  const std::string first = draw();
  const std::string second = draw();
  EXPECT_NE(first, second);
  EXPECT_NE(run("[Math.random(), Math.random()].join()"), first);
}

}  // namespace
}  // namespace morvik::test
