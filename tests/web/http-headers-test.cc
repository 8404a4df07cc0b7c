// Request headers: from objects and arrays to lines, in the order of the engine's enumeration.
#include "web/http-headers.h"

#include <csignal>

#include "support/unit/library-spy.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

class HttpHeadersTest : public ScriptTest {
 protected:
  // The lines made from an expression, or one line with what it threw.
  Lines linesOf(const std::string& expression) {
    const v8::Context::Scope entered(context());
    v8::TryCatch tryCatch(isolate());
    const auto headers = object(expression);
    log.clear();
    CurlList list;
    if (!genCurlHeaders(isolate(), headers, list)) {
      return {std::string("throws: ") + *v8::String::Utf8Value(isolate(), tryCatch.Exception())};
    }
    Lines lines;
    for (const curl_slist* item = list.get(); item != nullptr; item = item->next) {
      lines.emplace_back(item->data);
    }
    return lines;
  }
};

TEST_F(HttpHeadersTest, becomeLines) {
  const struct {
    const char* headers;
    Lines lines;
  } rows[] = {
      {"{}", {}},
      {"{A: 1}", {"A: 1"}},
      {"{B: 'x', A: 'y', C: ''}", {"B: x", "A: y", "C: "}},
      {"{b: 1, 7: 2, a: 3, 1: 4}", {"1: 4", "7: 2", "b: 1", "a: 3"}},
      {"{A: 'x: y', B: 'one\\r\\nC: two'}", {"A: x: y", "B: one\r\nC: two"}},
      {"{A: null, B: undefined, C: true, D: 1.5, E: [1, 2], F: {}}",
       {"A: null", "B: undefined", "C: true", "D: 1.5", "E: 1,2", "F: [object Object]"}},
      {"{'\\u00e9': '\\u0141\\0z'}", {"\xe9: A z"}},
      {"{A: {toString() { return 'own'; }}}", {"A: own"}},
      {"{get A() { return 'got'; }}", {"A: got"}},
      {"{A: 1, [Symbol('s')]: 2}", {"A: 1"}},
      {"Object.create({A: 1, B: 2}, {B: {value: 3, enumerable: true}})", {"B: 3", "A: 1"}},
      {"Object.defineProperty({A: 1}, 'B', {value: 2})", {"A: 1"}},
      {"function() {}", {}},
      {"Object('ab')", {"0: a", "1: b"}},
      {"new Proxy({A: 1}, {get: (t, n) => 'seen ' + String(n)})", {"A: seen A"}},
      {"[]", {}},
      {"[{A: 1}, 7, {B: 2}]", {"A: 1", "B: 2"}},
      {"[null, undefined, 'A: 1', {}, , {A: 1}]", {"A: 1"}},
      {"[{A: 1}, {A: 1}]", {"A: 1", "A: 1"}},
      {"[['x', 'y']]", {"0: x", "1: y"}},
      {"[function() {}]", {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.headers);
    EXPECT_EQ(linesOf(row.headers), row.lines);
  }
}

TEST_F(HttpHeadersTest, anEmptyHandleIsNone) {
  CurlList list;
  EXPECT_TRUE(genCurlHeaders(isolate(), v8::Local<v8::Object>(), list));
  EXPECT_EQ(list, nullptr);
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(HttpHeadersTest, theLogTellsEachStep) {
  linesOf("{A: 1, B: 'x'}");
  EXPECT_THAT(levelled(log.lines()), ElementsAre("DEBUG header map", "DEBUG Headers : 2",
                                                 "DEBUG HEADER A => 1", "DEBUG HEADER B => x"));
  linesOf("[{A: 1}, 7, {B: 2}]");
  EXPECT_THAT(levelled(log.lines()),
              ElementsAre("DEBUG header array", "DEBUG array [0]", "DEBUG Headers : 1",
                          "DEBUG HEADER A => 1", "DEBUG array [1]", "DEBUG array [2]",
                          "DEBUG Headers : 1", "DEBUG HEADER B => 2"));
}

TEST_F(HttpHeadersTest, anElementIsToldBeforeItIsRead) {
  linesOf("Object.defineProperty([], 0, {get() { throw 'element'; }})");
  EXPECT_THAT(levelled(log.lines()), ElementsAre("DEBUG header array", "DEBUG array [0]"));
}

TEST_F(HttpHeadersTest, exceptionsOfTheScriptEndTheWalk) {
  const struct {
    const char* headers;
    const char* thrown;
  } rows[] = {
      {"{A: 1, get B() { throw 'getter'; }, C: 2}", "throws: getter"},
      {"{A: {toString() { throw 'text'; }}}", "throws: text"},
      {"{A: Symbol('s')}", "throws: TypeError: Cannot convert a Symbol value to a string"},
      {"new Proxy({}, {ownKeys() { throw 'keys'; }})", "throws: keys"},
      {"[{A: 1}, {get B() { throw 'getter'; }}]", "throws: getter"},
      {"Object.defineProperty([], 0, {get() { throw 'element'; }})", "throws: element"},
  };
  for (const auto& row : rows) EXPECT_THAT(linesOf(row.headers), ElementsAre(row.thrown));
}

TEST_F(HttpHeadersTest, whatAGetterTakesAwayIsReadAsItIsThen) {
  EXPECT_THAT(linesOf("{get A() { delete this.B; this.C = 9; return 1; }, B: 2}"),
              ElementsAre("A: 1", "B: undefined"));
  EXPECT_THAT(linesOf("(() => { const a = [, {B: 1}];"
                      "  Object.defineProperty(a, 0, {get() { a.length = 1; return {A: 1}; }});"
                      "  return a; })()"),
              ElementsAre("A: 1"));
}

TEST_F(HttpHeadersTest, loseNoLineForWantOfMemory) {
  const auto append = [this] {
    LibrarySpy spy;
    spy.curlListFails = true;
    linesOf("{A: 1}");
  };
  EXPECT_EXIT(append(), testing::KilledBySignal(SIGTRAP),
              "script engine out of memory: a header line does not fit");
}

}  // namespace
}  // namespace morvik::test
