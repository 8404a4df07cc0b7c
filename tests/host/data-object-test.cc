// Objects that stand for a file.
#include "host/data-object.h"

#include <cstring>
#include <filesystem>

#include "host/files-test.h"

namespace morvik::test {
namespace {

using namespace std::string_literals;

class DataObjectTest : public FilesTest {
 protected:
  // The path that a script value stands for, or "none".
  std::string pathOf(const std::string& expression) {
    expose("pathOf", [](const Args& args) {
      const auto path = dataPath(args[0]);
      args.GetReturnValue().Set(path ? *path : toScript("none"));
    });
    expose("file", [](const Args& args) {
      args.GetReturnValue().Set(
          newDataObject(args.GetIsolate()->GetCurrentContext(), "/tmp/picture.jpg"));
    });
    return run("pathOf(" + expression + ")");
  }

  // The text of a file with this content, escaped.
  std::string textFrom(const std::string& content) {
    put("a.txt", content);
    return run("escape(file.read('a.txt').text)");
  }
};

TEST_F(DataObjectTest, onlyFileObjectsStandForAPath) {
  const struct {
    const char* expression;
    const char* path;
  } rows[] = {
      {"file()", "/tmp/picture.jpg"},
      {"", "none"},
      {"null", "none"},
      {"1", "none"},
      {"'/etc/passwd'", "none"},
      {"{}", "none"},
      {"{path: '/etc/passwd', 1: '/etc/passwd'}", "none"},
      {"function() {}", "none"},
      {"[1, '/etc/passwd']", "none"},
      {"new ArrayBuffer(8)", "none"},
      {"new Uint8Array(8)", "none"},
      {"new DataView(new ArrayBuffer(8))", "none"},
      {"Promise.resolve('/etc/passwd')", "none"},
      {"globalThis", "none"},
      {"morvik", "none"},
      {"new Proxy(file(), {})", "none"},
      {"Object.create(file())", "none"},
      {"Object.assign({}, file())", "none"},
      {"Symbol()", "none"},
      {"new (file().constructor)()", "none"},
      {"new (file().constructor)('/etc/passwd', '/etc/passwd')", "none"},
      {"Reflect.construct(file().constructor, [], Array)", "none"},
      {"new (class extends file().constructor {})()", "none"},
      {"Object.setPrototypeOf(new (file().constructor)(), file())", "none"},
      {"file().constructor.prototype", "none"},
      {"{...file()}", "none"},
      {"new (globalThis.constructor)()", "none"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expression);
    EXPECT_EQ(pathOf(row.expression), row.path);
  }
}

TEST_F(DataObjectTest, aScriptSeesNothingOfIt) {
  pathOf("null");
  EXPECT_EQ(run("JSON.stringify(Reflect.ownKeys(file()))"), "[]");
  EXPECT_EQ(run("var f = file(); f.path = 'x'; f[1] = 'y'; pathOf(f)"), "/tmp/picture.jpg");
}

TEST_F(DataObjectTest, textIsTheFile) {
  EXPECT_EQ(textFrom(""), "");
  EXPECT_EQ(textFrom("hello"), "hello");
  EXPECT_EQ(textFrom("a\nb\n"), "a%0Ab%0A");
  EXPECT_EQ(textFrom("before\0after"s), "before");
  EXPECT_EQ(textFrom("\0after"s), "");
  EXPECT_EQ(textFrom("\xc3\xa9"), "%E9");
  EXPECT_EQ(textFrom("\xffx"), "%uFFFDx");
  const std::string large(100000, 'x');
  EXPECT_EQ(textFrom(large), large);
}

TEST_F(DataObjectTest, textIsReadAnewEachTime) {
  put("a.txt", "first");
  EXPECT_EQ(run("var data = file.read('a.txt'); data.text"), "first");
  put("a.txt", "second");
  EXPECT_EQ(run("data.text"), "second");
  std::filesystem::remove(path("a.txt"));
  expectThrows("data.text", "cannot open resource: " + path("a.txt"));
  put("a.txt", "third");
  EXPECT_EQ(run("data.text"), "third");
}

TEST_F(DataObjectTest, aMissingFileShowsWhenItsTextIsRead) {
  EXPECT_EQ(run("var data = file.read('no/such.txt'); typeof data"), "object");
  for (int round = 0; round < 2; ++round) {
    log.clear();
    expectThrows("data.text", "cannot open resource: " + path("no/such.txt"));
    EXPECT_EQ(ownLines(),
              (Lines{"MESSAGE path " + path("no/such.txt"), "WARNING No such file or directory"}));
  }
}

TEST_F(DataObjectTest, readingLogsItsSteps) {
  put("a.txt", "hello");
  run("var data = file.read('a.txt')");
  EXPECT_EQ(ownLines(), Lines{"DEBUG getDataResource(" + path("a.txt") + ")"});
  log.clear();
  EXPECT_EQ(run("data.text"), "hello");
  EXPECT_EQ(ownLines(), Lines{"MESSAGE path " + path("a.txt")});
}

TEST_F(DataObjectTest, whatCannotBeReadSaysWhy) {
  put("sub/a.txt", "x");
  files.writeUnopenable("socket");
  expectAllThrow({"file.read('sub').text"}, "cannot open resource: " + path("sub"),
                 {"DEBUG getDataResource(" + path("sub") + ")", "MESSAGE path " + path("sub"),
                  "WARNING Is a directory"});
  expectAllThrow({"file.read('socket').text"}, "cannot open resource: " + path("socket"),
                 {"DEBUG getDataResource(" + path("socket") + ")", "MESSAGE path " + path("socket"),
                  "WARNING No such device or address"});
}

TEST_F(DataObjectTest, assigningToTextDoesNothing) {
  put("a.txt", "hello");
  EXPECT_EQ(run("'use strict'; const data = file.read('a.txt'); data.text = 'x'; data.text"),
            "hello");
  EXPECT_EQ(contentOf("a.txt"), "hello");
}

TEST_F(DataObjectTest, aDataObjectShowsItsTextAndNothingElse) {
  EXPECT_EQ(run("Reflect.ownKeys(file.read('a')).join()"), "text");
  const v8::Context::Scope entered(context());
  const auto data = getDataResource("/some/path");
  EXPECT_EQ(log.lines().back(), (LogLine{G_LOG_LEVEL_DEBUG, "getDataResource(/some/path)"}));
  ASSERT_EQ(data->InternalFieldCount(), 2);
  const auto buffer = data->GetInternalField(0).As<v8::Value>();
  ASSERT_TRUE(buffer->IsExternal());
  EXPECT_EQ(buffer.As<v8::External>()->Value(), nullptr);
  const auto stored = dataPath(data);
  ASSERT_TRUE(stored);
  EXPECT_EQ(asciiText(isolate(), *stored), "/some/path");
}

// An application that reads a file every few seconds may live for months.
TEST_F(DataObjectTest, objectsThatAreForgottenLeaveNothing) {
  put("a.txt", "hello");
  EXPECT_EQ(run("for (let i = 0; i < 20000; ++i) file.read('a.txt'); file.read('a.txt').text"),
            "hello");
}

// What a script can make of a data object without the host: it has the object's fields, with
// nothing in them, or the object's looks, without the fields.
TEST_F(DataObjectTest, forgedObjectsReadAsAMissingFile) {
  put("a.txt", "hello");
  run("var x = file.read('a.txt'); var Maker = x.constructor;");
  for (const char* forged :
       {"new Maker()", "new Maker('a.txt', 'a.txt')", "Reflect.construct(Maker, [])",
        "Reflect.construct(Maker, [], Array)", "Reflect.construct(Maker, [], function() {})",
        "new (class extends Maker {})()", "Object.setPrototypeOf(new Maker(), x)",
        "Object.assign(new Maker(), {path: 'a.txt', 1: 'a.txt'})", "new Proxy(new Maker(), {})",
        "Object.create(new Maker())", "Object.freeze(new Maker())",
        "new (new Maker().constructor)()", "Reflect.construct(new Proxy(Maker, {}), [])"}) {
    SCOPED_TRACE(forged);
    expectThrows(std::string("(") + forged + ").text", "cannot open resource: ");
    EXPECT_THAT(ownLines(), testing::Contains("WARNING No such file or directory"));
  }
}

TEST_F(DataObjectTest, whatLeadsToADataObjectReadsItsFile) {
  put("a.txt", "hello");
  run("var x = file.read('a.txt');");
  for (const char* way :
       {"Object.create(x).text", "new Proxy(x, {}).text", "({__proto__: x}).text",
        "Reflect.get(x, 'text', new (x.constructor)())", "Object.assign({}, x).text",
        "({...x}).text", "JSON.parse(JSON.stringify(x)).text", "Object.values(x)[0]",
        "Object.getOwnPropertyDescriptor(x, 'text').value"}) {
    SCOPED_TRACE(way);
    EXPECT_EQ(run(way), "hello");
  }
}

TEST_F(DataObjectTest, whatOnlyLooksLikeADataObjectHasNoText) {
  run("var x = file.read('a.txt'); var Maker = x.constructor;");
  for (const char* other : {"Maker.prototype", "Maker", "Object.getPrototypeOf(x)", "Maker()",
                            "Maker.call({})", "Maker.call(new ArrayBuffer(8))"}) {
    SCOPED_TRACE(other);
    EXPECT_EQ(run(std::string("String((") + other + ").text)"), "undefined");
  }
}

TEST_F(DataObjectTest, loadResourceGivesTheFileAndAZeroByte) {
  put("a.bin", "a\0b"s);
  const auto buffer = loadResource(path("a.bin"));
  ASSERT_TRUE(buffer);
  EXPECT_EQ(buffer->size, 3);
  EXPECT_EQ(std::memcmp(buffer->data.get(), "a\0b\0", 4), 0);
  put("empty", "");
  const auto empty = loadResource(path("empty"));
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->size, 0);
  EXPECT_EQ(empty->data.get()[0], 0);
  EXPECT_EQ(ownLines(), Lines());
  EXPECT_FALSE(loadResource(path("missing")));
  EXPECT_EQ(ownLines(), Lines{"WARNING No such file or directory"});
}

}  // namespace
}  // namespace morvik::test
