// Bodies of posts: urlencoded texts, files, forms and the extra field, with every line of the log.
#include "web/http-body.h"

#include <filesystem>
#include <fstream>

#include "host/data-object.h"
#include "support/unit/log-texts.h"
#include "support/unit/web-test.h"
#include "web/hidden-value.h"

namespace morvik::test {
namespace {

class HttpBodyTest : public WebTest {
 protected:
  // The urlencoded body of an expression's value, or what it threw. `len` is kept aside.
  std::string simple(const std::string& params, const ExtraField* extra = nullptr) {
    const auto post = generated(genCurlPostSimple, params, extra);
    if (!post) return thrown;
    len = post->len;
    return post->data;
  }

  // What generating the form wrote to the log, or what it threw.
  std::vector<std::string> formLines(const std::string& params, const ExtraField* extra = nullptr) {
    const auto form = generated(genCurlPostForm, params, extra);
    if (!form) return {thrown};
    empty = form->empty();
    return logLines();
  }

  std::int32_t len = 0;
  bool empty = false;

 private:
  // What a function makes of an expression's value. Where it makes nothing, `thrown` says why.
  template <class Body>
  std::optional<Body> generated(std::optional<Body> (*generate)(v8::Isolate*, v8::Local<v8::Object>,
                                                                const ExtraField*),
                                const std::string& params, const ExtraField* extra) {
    const v8::Context::Scope entered(context());
    v8::TryCatch tryCatch(isolate());
    const auto value = object(params);
    log.clear();
    auto body = generate(isolate(), value, extra);
    if (!body)
      thrown = std::string("throws: ") + *v8::String::Utf8Value(isolate(), tryCatch.Exception());
    return body;
  }

  std::string thrown;
};

TEST_F(HttpBodyTest, simpleBodies) {
  const struct {
    const char* params;
    const char* body;
  } rows[] = {
      {"{}", ""},
      {"[]", ""},
      {"{'\\u00e9': 1}", "%C3%A9=1"},
      {"function() {}", ""},
      {"{a: 1}", "a=1"},
      {"{a: 1, b: 2}", "a=1&b=2"},
      {"{b: 1, a: 2, 10: 3, 9: 4}", "9=4&10=3&b=1&a=2"},
      {"{a: ''}", "a="},
      {"{'': 'x'}", "=x"},
      {"['x', 'y']", "0=x&1=y"},
      {"{'a b&c': 'd=e+f/g?\\u00e9\\u20ac'}", "a%20b%26c=d%3De%2Bf%2Fg%3F%C3%A9%E2%82%AC"},
      {"{a: '\\ud800'}", "a=%ED%A0%80"},  // half a character, as the engine writes it
      {"{a: 'x\\0y', b: 1}", "a=x&b=1"},  // texts end at a NUL
      {"{a: null, b: undefined, c: true, d: 1.5}", "a=null&b=undefined&c=true&d=1.5"},
      {"{a: {}, b: 1}", "a=%5Bobject%20Object%5D&b=1"},
      {"{a: [1, 2], b: 1}", "a=1%2C2&b=1"},
      {"{a: {toString() { return 'own'; }}, b: 1}", "a=own&b=1"},
      {"{a: picture, b: 1}", "a=%5Bobject%20Object%5D&b=1"},
      {"Object.create({a: 1, b: 2}, {b: {value: 3, enumerable: true}})", "b=3&a=1"},
      {"Object.defineProperty({a: 1}, 'b', {value: 2})", "a=1"},
      {"{a: 1, [Symbol('s')]: 2}", "a=1"},
      {"new Proxy({a: 1, b: 2}, {get: (t, n) => 'seen ' + n})", "a=seen%20a&b=seen%20b"},
      {"{get a() { delete this.b; this.c = 9; return 1; }, b: 2}", "a=1&b=undefined"},
      // A single object that stands for no file is dropped.
      {"{a: {}}", ""},
      {"{a: [1, 2]}", ""},
      {"{a: function() {}}", ""},
      {"{a: new Uint8Array(2)}", ""},
      {"{a: globalThis}", ""},
      {"{a: new Proxy({}, {})}", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.params);
    EXPECT_EQ(simple(row.params), row.body);
    EXPECT_EQ(len, -1);
  }
}

TEST_F(HttpBodyTest, aSimpleBodysLog) {
  simple("{a: 'x y', b: 2}");
  EXPECT_THAT(logLines(),
              ElementsAre("DEBUG genCurlPostSimple", "DEBUG Post params: 2", "DEBUG a => x y",
                          "DEBUG postSize : 8", "DEBUG data : a=x%20y&", "DEBUG b => 2",
                          "DEBUG postSize : 12", "DEBUG data : a=x%20y&b=2&", "DEBUG postSize : 12",
                          "WARNING http data the end : a=x%20y&b=2 "));
  simple("{}");
  EXPECT_THAT(logLines(), ElementsAre("DEBUG genCurlPostSimple", "DEBUG Post params: 0",
                                      "DEBUG postSize : 0", "WARNING http data the end :  "));
}

constexpr const char* kFileLine =
    "DEBUG genCurlPostSimple : value->IsObject() && arrayKey->Length() == 1";

TEST_F(HttpBodyTest, aDroppedObjectsLog) {
  simple("{a: {}}");
  EXPECT_THAT(logLines(), ElementsAre("DEBUG genCurlPostSimple", "DEBUG Post params: 1", kFileLine,
                                      "DEBUG postSize : 0", "WARNING http data the end :  "));
}

TEST_F(HttpBodyTest, aSingleFileGoesAsItsBytes) {
  writePicture("file & bytes");
  EXPECT_EQ(simple("{a: picture}"), "file & bytes");
  EXPECT_EQ(len, 12);
  EXPECT_THAT(logLines(), ElementsAre("DEBUG genCurlPostSimple", "DEBUG Post params: 1", kFileLine,
                                      "WARNING http data the end : file & bytes "));

  const std::string binary("a\0b\xff", 4);
  writePicture(binary);
  EXPECT_EQ(simple("{a: picture}"), binary);
  EXPECT_EQ(len, 4);
  EXPECT_EQ(log.texts().back(), "http data the end : a ");

  const std::string large(100000, 'x');
  writePicture(large);
  EXPECT_EQ(simple("[picture]"), large);
  EXPECT_EQ(len, 100000);
}

TEST_F(HttpBodyTest, anEmptyFile) {
  writePicture("");
  EXPECT_EQ(simple("{a: picture}"), "");
  EXPECT_EQ(len, 0);
  EXPECT_EQ(log.texts().back(), "http data the end :  ");
}

TEST_F(HttpBodyTest, aFileThatCannotBeReadLeavesTheBodyEmpty) {
  EXPECT_EQ(simple("{a: missing}"), "");
  EXPECT_EQ(len, -1);
  EXPECT_THAT(logLines(), ElementsAre("DEBUG genCurlPostSimple", "DEBUG Post params: 1", kFileLine,
                                      "DEBUG postSize : 0", "WARNING http data the end :  "));
  // A folder can be opened but has no size that a post can have.
  std::filesystem::create_directory(pictureFile());
  EXPECT_EQ(simple("{a: picture}"), "");
  EXPECT_EQ(len, -1);
}

TEST_F(HttpBodyTest, aPathIsOneByteForEachUnit) {
  std::ofstream(pictureFile() + "\xe9") << "one byte";
  setGlobal("accented", newDataObject(context(), pictureFile() + "\xc3\xa9"));
  EXPECT_EQ(simple("{a: accented}"), "one byte");
}

TEST_F(HttpBodyTest, aFileBeyondThirtyTwoBitsIsNotRead) {
  writePicture("");
  std::filesystem::resize_file(pictureFile(), std::uintmax_t{1} << 31);  // takes no room on disk
  EXPECT_EQ(simple("{a: picture}"), "");
  EXPECT_EQ(len, -1);
}

TEST_F(HttpBodyTest, theLogTellsWhereABufferOfFixedStepsWouldGrow) {
  const struct {
    int value;  // the length of one value under a one-letter name
    bool grows;
  } rows[] = {{8188, false}, {8189, true}, {20000, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.value);
    const std::string body = simple("{a: 'x'.repeat(" + std::to_string(row.value) + ")}");
    EXPECT_EQ(body, "a=" + std::string(static_cast<std::size_t>(row.value), 'x'));
    EXPECT_EQ(log.has(G_LOG_LEVEL_DEBUG, "postSize realloc"), row.grows);
  }
  // What is escaped outruns the unescaped count; the body is whole all the same.
  std::string escaped;
  for (int i = 0; i < 5000; ++i) escaped += "%26";
  EXPECT_EQ(simple("{a: '&'.repeat(5000), b: '&'.repeat(5000)}"), "a=" + escaped + "&b=" + escaped);
  EXPECT_THAT(log.texts(), testing::Contains("postSize realloc").Times(1));
  EXPECT_EQ(log.texts().at(2 + 1), "postSize : 15003");
  // One step of 1024 for each field that does not fit.
  simple("{a: 'x'.repeat(8187), b: 'x'.repeat(500), c: 'x'.repeat(500), d: 'x'.repeat(500)}");
  EXPECT_THAT(log.texts(), testing::Contains("postSize realloc").Times(2));
}

TEST_F(HttpBodyTest, exceptionsOfTheScriptEndTheWalk) {
  const struct {
    const char* params;
    const char* thrown;
  } rows[] = {
      {"{a: 1, get b() { throw 'getter'; }}", "throws: getter"},
      {"{a: {toString() { throw 'text'; }}, b: 1}", "throws: text"},
      {"{a: Symbol('s')}", "throws: TypeError: Cannot convert a Symbol value to a string"},
      {"new Proxy({}, {ownKeys() { throw 'keys'; }})", "throws: keys"},
      {"new Proxy({a: 1}, {get() { throw 'get'; }})", "throws: get"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(simple(row.params), row.thrown);
    EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), ElementsAre());
    EXPECT_THAT(formLines(std::string(row.params).find("toString") == std::string::npos
                              ? row.params
                              : "{get a() { throw 'text'; }}"),
                ElementsAre(row.thrown));
  }
}

TEST_F(HttpBodyTest, theExtraFieldStandsWhereACloneWouldHaveIt) {
  const ExtraField extra{"token", "se&cret"};
  const struct {
    const char* params;
    const char* body;
  } rows[] = {
      {"{}", "token=se%26cret"},
      {"{a: 1}", "a=1&token=se%26cret"},
      {"{token: 'mine'}", "token=se%26cret"},
      {"{a: 1, token: 'mine', b: 2}", "a=1&token=se%26cret&b=2"},
      {"{z: 1, 5: 2}", "5=2&z=1&token=se%26cret"},
      {"['x']", "0=x&token=se%26cret"},
      {"Object.create({c: 3}, {a: {value: 1, enumerable: true}})", "a=1&token=se%26cret&c=3"},
      {"Object.create({token: 'theirs', c: 3}, {a: {value: 1, enumerable: true}})",
       "a=1&token=se%26cret&c=3"},
      {"Object.create({c: 3, token: 'theirs'}, {token: {value: 1, enumerable: true}})",
       "token=se%26cret&c=3"},
      {"Object.defineProperty({a: 1}, 'token', {value: 2})", "a=1&token=se%26cret"},
      {"Object.freeze({a: 1, token: 2})", "a=1&token=se%26cret"},
      {"Object.freeze({a: 1})", "a=1&token=se%26cret"},
      // With it there are two parameters: the file goes as its text, and so does any other object.
      {"{source: picture}", "source=%5Bobject%20Object%5D&token=se%26cret"},
      {"{a: {}}", "a=%5Bobject%20Object%5D&token=se%26cret"},
      {"{token: picture}", "token=se%26cret"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.params);
    EXPECT_EQ(simple(row.params, &extra), row.body);
    EXPECT_EQ(len, -1);
  }
  simple("{a: 1}", &extra);
  EXPECT_EQ(logLines().at(1), "DEBUG Post params: 2");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "token => se&cret"));
}

// The same order that the engine gives for a clone with the field set on it.
TEST_F(HttpBodyTest, theExtraFieldsPlaceIsTheEngines) {
  const ExtraField extra{"token", "T"};
  for (const char* params :
       {"{}", "{a: 1}", "{token: 0, a: 1}", "{b: 1, 3: 2, token: 0, 1: 3}", "['x', 'y']",
        "Object.create({c: 3}, {a: {value: 1, enumerable: true}})",
        "Object.create({c: 3, token: 1, d: 4})", "Object.create(Object.create({7: 1, e: 2}))",
        "Object.assign(Object.create({a: 5, x: 6}), {y: 1, a: 2})"}) {
    SCOPED_TRACE(params);
    std::string cloned;
    {
      const v8::Context::Scope entered(context());
      const auto clone = object(params)->Clone();
      clone->Set(context(), toScript("token"), toScript("T")).Check();
      cloned = genCurlPostSimple(isolate(), clone)->data;
    }
    EXPECT_EQ(simple(params, &extra), cloned);
  }
}

// The engine asks it once, and from then on it is asked for the values only.
TEST_F(HttpBodyTest, withTheExtraFieldAProxyIsAskedForItsNamesOnce) {
  const ExtraField extra{"token", "T"};
  run("var asked = 0; var names = new Proxy({a: 1, token: 2, b: 3},"
      "  {ownKeys(target) { ++asked; return Reflect.ownKeys(target); }})");
  EXPECT_EQ(simple("names", &extra), "a=1&token=T&b=3");
  EXPECT_EQ(run("asked"), "1");
}

TEST_F(HttpBodyTest, noScriptMeetsTheExtraField) {
  const ExtraField extra{"token", "secret"};
  run("var seen = [];"
      "Object.defineProperty(Object.prototype, 'token', {configurable: true,"
      "  set(value) { seen.push('setter', value); }, get() { seen.push('getter'); }});"
      "var traps = new Proxy({a: 1, token: 2}, new Proxy({}, {get(t, trap) {"
      "  return (...args) => { seen.push(trap, ...args); return Reflect[trap](...args); }; }}));"
      "var getters = {get a() { seen.push(this.token, Object.getOwnPropertyDescriptor(this, "
      "'token').value); return 1; },"
      "  set token(value) { seen.push('own setter', value); }, get token() { return 'own'; }};");
  EXPECT_EQ(simple("{b: 1}", &extra), "b=1&token=secret");
  EXPECT_EQ(simple("traps", &extra), "a=1&token=secret");
  EXPECT_EQ(simple("getters", &extra), "a=1&token=secret");
  formLines("traps", &extra);
  formLines("getters", &extra);
  EXPECT_EQ(run("seen.includes('secret') + ' ' + seen.includes('setter') + ' ' +"
                "seen.includes('own setter') + ' ' + seen.includes('getOwnPropertyDescriptor')"),
            "false false false true");
  EXPECT_EQ(run("delete Object.prototype.token; JSON.stringify([getters.token, traps.token])"),
            "[\"own\",2]");
}

TEST_F(HttpBodyTest, aFormsLog) {
  writePicture("bytes");
  EXPECT_THAT(formLines("{a: 'x y', b: 2}"),
              ElementsAre("DEBUG Post params: 2", "DEBUG a => x y", "DEBUG b => 2"));
  EXPECT_FALSE(empty);
  EXPECT_THAT(formLines("{}"), ElementsAre("DEBUG Post params: 0"));
  EXPECT_TRUE(empty);
  EXPECT_THAT(formLines("{a: {}, b: [1]}"), ElementsAre("DEBUG Post params: 2"));
  EXPECT_TRUE(empty);
  // The engine's own objects with fields stand for no file.
  EXPECT_THAT(formLines("{a: new Uint8Array(2), b: new ArrayBuffer(2)}"),
              ElementsAre("DEBUG Post params: 2"));
  EXPECT_TRUE(empty);
  EXPECT_THAT(formLines("{a: picture, b: missing}"), ElementsAre("DEBUG Post params: 2"));
  EXPECT_FALSE(empty);
}

TEST_F(HttpBodyTest, aFormTakesTheTokenOfASocialAccount) {
  {
    const v8::Context::Scope entered(context());
    const auto account = object("globalThis.account = {}");
    setHidden(account, "token", toScript("hu\xc3\xa9sh"));
    const auto file = object("globalThis.both = picture");
    setHidden(file, "token", toScript("first"));
    setHidden(object("globalThis.odd = {}"), "token", v8::Number::New(isolate(), 5));
  }
  EXPECT_THAT(formLines("{a: account}"),
              ElementsAre("DEBUG Post params: 1", "DEBUG TOKEN hu\xe9sh"));
  EXPECT_FALSE(empty);
  // A token comes before a file.
  EXPECT_THAT(formLines("{a: both}"), ElementsAre("DEBUG Post params: 1", "DEBUG TOKEN first"));
  EXPECT_THAT(formLines("{a: odd, b: Object.create(account), c: {token: 'mine'}}"),
              ElementsAre("DEBUG Post params: 3"));
  EXPECT_TRUE(empty);
  // Without a form it is an object like any other.
  EXPECT_EQ(simple("{a: account}"), "");
}

TEST_F(HttpBodyTest, aFormHasTheExtraFieldToo) {
  const ExtraField extra{"token", "secret"};
  EXPECT_THAT(
      formLines("{a: 1, token: 'mine', b: 2}", &extra),
      ElementsAre("DEBUG Post params: 3", "DEBUG a => 1", "DEBUG token => secret", "DEBUG b => 2"));
  EXPECT_THAT(formLines("{}", &extra),
              ElementsAre("DEBUG Post params: 1", "DEBUG token => secret"));
}

}  // namespace
}  // namespace morvik::test
