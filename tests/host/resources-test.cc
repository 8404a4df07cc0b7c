// include, file.read, file.write and data objects.
#include "host/resources.h"

#include <cstring>
#include <filesystem>

#include "host/app-files.h"
#include "host/data-object.h"
#include "support/file-content.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

class ResourcesTest : public FeatureTest {
 protected:
  ResourcesTest() { options.app_folder = files.root(); }

  [[nodiscard]] std::string path(const std::string& name) const { return files.path(name); }

  void put(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    files.write(name, content);
  }

  [[nodiscard]] std::string contentOf(const std::string& name) const {
    return test::contentOf(path(name));
  }

  // The text of a file with this content, escaped.
  std::string textFrom(const std::string& content) {
    put("a.txt", content);
    return run("escape(file.read('a.txt').text)");
  }

  // Each call throws the text and leaves these lines.
  void expectAllThrow(const std::vector<std::string>& calls, const std::string& text,
                      const Lines& lines = {}) {
    for (const std::string& call : calls) {
      SCOPED_TRACE(call);
      expectThrows(call, text);
      EXPECT_EQ(ownLines(), lines);
    }
  }

  AppFiles files;
};

TEST_F(ResourcesTest, textIsTheFile) {
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

TEST_F(ResourcesTest, readingLogsItsSteps) {
  put("a.txt", "hello");
  run("var data = file.read('a.txt')");
  EXPECT_EQ(ownLines(), Lines{"DEBUG getDataResource(" + path("a.txt") + ")"});
  log.clear();
  EXPECT_EQ(run("data.text"), "hello");
  EXPECT_EQ(ownLines(), Lines{"MESSAGE path " + path("a.txt")});
}

TEST_F(ResourcesTest, textIsReadAnewEachTime) {
  put("a.txt", "first");
  EXPECT_EQ(run("var data = file.read('a.txt'); data.text"), "first");
  put("a.txt", "second");
  EXPECT_EQ(run("data.text"), "second");
  std::filesystem::remove(path("a.txt"));
  expectThrows("data.text", "cannot open resource: " + path("a.txt"));
  put("a.txt", "third");
  EXPECT_EQ(run("data.text"), "third");
}

TEST_F(ResourcesTest, aMissingFileShowsWhenItsTextIsRead) {
  EXPECT_EQ(run("var data = file.read('no/such.txt'); typeof data"), "object");
  for (int round = 0; round < 2; ++round) {
    log.clear();
    expectThrows("data.text", "cannot open resource: " + path("no/such.txt"));
    EXPECT_EQ(ownLines(),
              (Lines{"MESSAGE path " + path("no/such.txt"), "WARNING No such file or directory"}));
  }
}

TEST_F(ResourcesTest, whatCannotBeReadSaysWhy) {
  put("sub/a.txt", "x");
  files.writeUnopenable("socket");
  expectAllThrow({"file.read('sub').text"}, "cannot open resource: " + path("sub"),
                 {"DEBUG getDataResource(" + path("sub") + ")", "MESSAGE path " + path("sub"),
                  "WARNING Is a directory"});
  expectAllThrow({"file.read('socket').text"}, "cannot open resource: " + path("socket"),
                 {"DEBUG getDataResource(" + path("socket") + ")", "MESSAGE path " + path("socket"),
                  "WARNING No such device or address"});
}

TEST_F(ResourcesTest, assigningToTextDoesNothing) {
  put("a.txt", "hello");
  EXPECT_EQ(run("'use strict'; const data = file.read('a.txt'); data.text = 'x'; data.text"),
            "hello");
  EXPECT_EQ(contentOf("a.txt"), "hello");
}

TEST_F(ResourcesTest, aDataObjectShowsItsTextAndNothingElse) {
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
TEST_F(ResourcesTest, objectsThatAreForgottenLeaveNothing) {
  put("a.txt", "hello");
  EXPECT_EQ(run("for (let i = 0; i < 20000; ++i) file.read('a.txt'); file.read('a.txt').text"),
            "hello");
}

// What a script can make of a data object without the host: it has the object's fields, with
// nothing in them, or the object's looks, without the fields.
TEST_F(ResourcesTest, forgedObjectsReadAsAMissingFile) {
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

TEST_F(ResourcesTest, whatLeadsToADataObjectReadsItsFile) {
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

TEST_F(ResourcesTest, whatOnlyLooksLikeADataObjectHasNoText) {
  run("var x = file.read('a.txt'); var Maker = x.constructor;");
  for (const char* other : {"Maker.prototype", "Maker", "Object.getPrototypeOf(x)", "Maker()",
                            "Maker.call({})", "Maker.call(new ArrayBuffer(8))"}) {
    SCOPED_TRACE(other);
    EXPECT_EQ(run(std::string("String((") + other + ").text)"), "undefined");
  }
}

TEST_F(ResourcesTest, loadResourceGivesTheFileAndAZeroByte) {
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

TEST_F(ResourcesTest, everyOtherSignatureIsRefused) {
  expectAllThrow({"file.read()", "file.read(1)", "file.read('a', 'b')", "file.read(null)",
                  "file.read(undefined)", "file.read({})", "file.read(new String('a'))",
                  "file.read('descriptor.xml', 1)", "file.write()", "file.write('a')",
                  "file.write('a', 5)", "file.write(5, 'a')", "file.write('a', null)",
                  "file.write('a', 'b', 'c')", "file.write('a', new String('b'))",
                  "file.write('descriptor.xml', 5)", "file.write('a', file.read)"},
                 "Signature error function");
  expectAllThrow({"include()", "include(1)", "include('a', 'b')", "include(null)", "include({})",
                  "include(new String('a'))", "include('descriptor.xml', 1)"},
                 "Must contain only one file");
  EXPECT_TRUE(std::filesystem::is_empty(path("")));
}

TEST_F(ResourcesTest, forbiddenNamesAreRefusedInTheSameWords) {
  put("a b", "throw 'it ran'");
  const std::pair<const char*, const char*> names[] = {
      {"descriptor.xml", "descriptor.xml"},
      {"x/descriptor.xml.js", "x/descriptor.xml.js"},
      {"../x", "../x"},
      {"a..b", "a..b"},
      {"sub/../../x.js", "sub/../../x.js"},
      {"a b", "a b"},
      {"a\\0b", "a b"},
      {"a*", "a*"},
      {"%s", "%s"},
  };
  for (const auto& [name, text] : names) {
    const std::string quoted = std::string("('") + name + "'";
    expectAllThrow(
        {"include" + quoted + ")", "file.read" + quoted + ")", "file.write" + quoted + ", 'x')"},
        std::string("access denied: ") + text, {std::string("WARNING access denied: ") + text});
  }
  EXPECT_EQ(contentOf("a b"), "throw 'it ran'");
}

TEST_F(ResourcesTest, otherNamesPass) {
  for (const char* name : {"a.b/c-d_e", ".hidden", "/lead", "Descriptor.xml", "a/./b", "9"}) {
    SCOPED_TRACE(name);
    log.clear();
    EXPECT_EQ(run(std::string("typeof file.read('") + name + "')"), "object");
    EXPECT_EQ(ownLines(), Lines{"DEBUG getDataResource(" + path(name) + ")"});
  }
}

TEST_F(ResourcesTest, aNameCountsByTheLowByteOfEachUnit) {
  put("aA", "x");
  EXPECT_EQ(run("file.read('a\\u0141').text"), "x");
}

TEST_F(ResourcesTest, longPathsAreCut) {
  const std::string name(600, 'n');
  run("file.read('" + name + "')");
  EXPECT_EQ(ownLines(), Lines{"DEBUG getDataResource(" + path(name).substr(0, 511) + ")"});
  // What can be read may be too long for an include.
  const std::string shorter = "sub/" + std::string(150, 'n') + "/" + std::string(150, 'm');
  put(shorter, "x");
  EXPECT_EQ(run("file.read('" + shorter + "').text"), "x");
}

TEST_F(ResourcesTest, writingReplacesTheFile) {
  put("keep", "");
  EXPECT_EQ(run("file.write('a.txt', 'a longer first text')"), "undefined");
  EXPECT_EQ(contentOf("a.txt"), "a longer first text");
  EXPECT_EQ(run("file.write('a.txt', 'second')"), "undefined");
  EXPECT_EQ(contentOf("a.txt"), "second");
  EXPECT_EQ(run("file.write('a.txt', '')"), "undefined");
  EXPECT_EQ(contentOf("a.txt"), "");
  EXPECT_TRUE(std::filesystem::exists(path("a.txt")));
  EXPECT_EQ(run("file.write('a.txt', 'x'); file.read('a.txt').text"), "x");
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING), Lines());
}

TEST_F(ResourcesTest, contentIsWrittenByTheLowByteOfEachUnit) {
  put("keep", "");
  run("file.write('a.txt', 'a\\u00e9\\u0141\\0b\\n')");
  EXPECT_EQ(contentOf("a.txt"),
            "a\xe9"
            "A b\n");
  const std::string large(100000, 'x');
  run("file.write('a.txt', 'x'.repeat(100000))");
  EXPECT_EQ(contentOf("a.txt"), large);
}

TEST_F(ResourcesTest, aWriteThatFailsIsLoggedAndThrown) {
  put("sub/a.txt", "x");
  std::filesystem::create_symlink("/dev/full", path("full"));
  const std::pair<const char*, const char*> rows[] = {
      {"file.write('no/such.txt', 'x')", "No such file or directory"},
      {"file.write('sub', 'x')", "Is a directory"},
      {"file.write('', 'x')", "Is a directory"},
      {"file.write('full', 'a text that waits in the buffer')", "No space left on device"},
      {"file.write('full', 'x'.repeat(1000000))", "No space left on device"},
  };
  for (const auto& [call, text] : rows) {
    expectAllThrow({call}, text, {std::string("WARNING ") + text});
  }
  EXPECT_EQ(run("file.write('full', '')"), "undefined");
}

TEST_F(ResourcesTest, includeRunsInTheApplicationsContext) {
  put("sub.dir/more.js", "var shared = (this.shared || 0) + 1; function more() { return 'more'; }");
  EXPECT_EQ(run("include('sub.dir/more.js')"), "undefined");
  EXPECT_EQ(ownLines(), (Lines{"DEBUG Include: sub.dir/more.js",
                               "DEBUG loading source: " + path("sub.dir/more.js")}));
  EXPECT_EQ(run("more() + shared"), "more1");
  EXPECT_EQ(run("include('sub.dir/more.js'); shared"), "2");
}

TEST_F(ResourcesTest, includeTakesNamesFromTheApplicationsFolder) {
  put("sub/outer.js", "include('inner.js')");
  put("sub/inner.js", "log('wrong')");
  put("inner.js", "log('right')");
  run("include('sub/outer.js')");
  EXPECT_THAT(logged(), ElementsAre("right"));
}

TEST_F(ResourcesTest, includeEndsAtAZeroByte) {
  put("a.js", "log('run');\0 nonsense ("s);
  EXPECT_EQ(run("include('a.js')"), "undefined");
  EXPECT_THAT(logged(), ElementsAre("run"));
}

TEST_F(ResourcesTest, whatGoesWrongInAnIncludeGoesToItsCaller) {
  put("throws.js", "log('before'); throw 'thrown'; log('after')");
  put("broken.js", "log('before') nonsense (");
  expectThrows("include('throws.js')", "thrown");
  EXPECT_THAT(logged(), ElementsAre("before"));
  log.clear();
  EXPECT_EQ(run("try { include('broken.js'); } catch (e) { e.name; }"), "SyntaxError");
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_EQ(log.texts(G_LOG_LEVEL_WARNING), Lines());
}

TEST_F(ResourcesTest, includedSourceGoesByItsName) {
  put("sub/a.js", "\nvar place = new Error('x').stack;");
  run("include('sub/a.js')");
  EXPECT_THAT(run("place"), testing::HasSubstr("sub/a.js:2"));
}

TEST_F(ResourcesTest, aFileThatIncludesItselfEndsInARangeError) {
  put("a.js", "include('a.js')");
  EXPECT_EQ(run("try { include('a.js'); } catch (e) { e.name; }"), "RangeError");
  EXPECT_EQ(run("1 + 1"), "2");
}

TEST_F(ResourcesTest, anIncludeThatCannotBeReadIsFatal) {
  EXPECT_DEATH(run("try { include('missing.js'); } catch (e) {}"),
               "fatal: No such file or directory");
}

TEST_F(ResourcesTest, fileHasItsFunctions) {
  EXPECT_EQ(run("Object.keys(file).join()"), "read,write");
  EXPECT_EQ(run("typeof include"), "function");
}

}  // namespace
}  // namespace morvik::test
