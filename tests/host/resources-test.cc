// include, file.read and file.write.
#include "host/resources.h"

#include <filesystem>

#include "host/files-test.h"

namespace morvik::test {
namespace {

using namespace std::string_literals;

class ResourcesTest : public FilesTest {};

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
