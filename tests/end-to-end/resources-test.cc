// include, file.read and file.write: an application's own folder, behind the path filter.
#include <signal.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "support/file-content.h"
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class ResourcesTest : public FeatureTest {
 protected:
  ResourcesTest() : FeatureTest("") {}

  // In the folder of the first application that a test runs.
  [[nodiscard]] std::string path(const std::string& file) const {
    return apps.path() + "/app1/" + file;
  }
  void put(const std::string& file, std::string_view bytes) {
    const std::filesystem::path name = std::filesystem::path("app1") / file;
    apps.file(name.parent_path(), name.filename(), bytes);
  }
  [[nodiscard]] std::string contentOf(const std::string& file) const {
    return test::contentOf(path(file));
  }

  // One application without any access runs the steps.
  void expectSteps(const std::vector<Step>& steps) {
    app = run(withGlobals(scriptOf(steps)), {});
    const std::vector<Lines> done = stepsTillEnd();
    ASSERT_EQ(done.size(), steps.size());
    for (std::size_t i = 0; i < steps.size(); ++i) {
      Lines expected = steps[i].lines;
      expected.push_back("MESSAGE JSLOG: " + steps[i].result);
      EXPECT_EQ(done[i], expected) << steps[i].call;
    }
  }

  [[nodiscard]] std::string made(const std::string& file) const {
    return "DEBUG getDataResource(" + path(file) + ")";
  }
  // What reading the text of such a file leaves.
  [[nodiscard]] Lines reading(const std::string& file) const {
    return {made(file), "MESSAGE path " + path(file)};
  }
  [[nodiscard]] Lines including(const std::string& file) const {
    return {"DEBUG Include: " + file, "DEBUG loading source: " + path(file)};
  }
};

TEST_F(ResourcesTest, everyApplicationHasThem) {
  expectLogged(
      {{"Object.keys(file).join()", "read,write"},
       {"typeof file.read + typeof file.write + typeof include", "functionfunctionfunction"}});
}

TEST_F(ResourcesTest, argumentsAreExactlyStrings) {
  std::vector<Step> steps;
  for (const std::string call :
       {"file.read()", "file.read(5)", "file.read('a', 'b')", "file.read(new String('a'))",
        "file.read('descriptor.xml', 1)", "file.write('a')", "file.write('a', 5)",
        "file.write(5, 'a')", "file.write('a', 'b', 'c')", "file.write('a', undefined)"})
    steps.push_back({call, "throws string Signature error function"});
  for (const std::string call : {"include()", "include(1)", "include('a', 'b')", "include(null)",
                                 "include(new String('a'))"})
    steps.push_back({call, "throws string Must contain only one file"});
  expectSteps(steps);
}

TEST_F(ResourcesTest, forbiddenNamesAreRefused) {
  put("a b", "throw 'it ran';");
  std::vector<Step> steps;
  for (const std::string name : {"descriptor.xml", "sub/descriptor.xml.js", "../x", "a..b", "a b",
                                 "sub/../../x.js", "a*", "%s"}) {
    const std::string text = "access denied: " + name;
    for (const std::string function : {"include(", "file.read(", "file.write("}) {
      const std::string content = function == "file.write(" ? ", 'x'" : "";
      steps.push_back({function + "'" + name + "'" + content + ")",
                       "throws string " + text,
                       {"WARNING " + text}});
    }
  }
  expectSteps(steps);
  EXPECT_EQ(contentOf("a b"), "throw 'it ran';");
}

// --- data objects

TEST_F(ResourcesTest, textIsTheFileUpToItsFirstZeroByte) {
  put("a.txt", "hello\n");
  put("empty", "");
  put("zero", std::string("before\0after", 12));
  put("sub.dir/utf8", "caf\xc3\xa9");
  expectSteps({{"file.read('a.txt').text", "hello\n", reading("a.txt")},
               {"file.read('empty').text", "", reading("empty")},
               {"file.read('zero').text", "before", reading("zero")},
               {"file.read('sub.dir/utf8').text.length", "4", reading("sub.dir/utf8")}});
}

TEST_F(ResourcesTest, aMissingFileShowsWhenItsTextIsRead) {
  const std::string missing = "throws string cannot open resource: " + path("missing");
  const Lines lines{"MESSAGE path " + path("missing"), "WARNING No such file or directory"};
  expectSteps({{"typeof (data = file.read('missing'))", "object", {made("missing")}},
               {"data.text", missing, lines},
               {"data.text", missing, lines},
               {"file.write('missing', 'found')", "undefined"},
               {"data.text", "found", {"MESSAGE path " + path("missing")}}});
}

TEST_F(ResourcesTest, textIsReadAnewEachTimeAndCannotBeSet) {
  put("a.txt", "first");
  const Lines read{"MESSAGE path " + path("a.txt")};
  expectSteps({{"(data = file.read('a.txt')).text", "first", reading("a.txt")},
               {"file.write('a.txt', 'second')", "undefined"},
               {"data.text", "second", read},
               {"data.text = 'third'", "third"},
               {"(function() { 'use strict'; data.text = 'third'; })()", "undefined"},
               {"data.text", "second", read},
               {"Reflect.ownKeys(data).join()", "text"}});
  EXPECT_EQ(contentOf("a.txt"), "second");
}

// --- writing

TEST_F(ResourcesTest, writingReplacesTheFileByTheLowByteOfEachUnit) {
  put("a.txt", "a longer text before");
  expectSteps({{"file.write('a.txt', 'new')", "undefined"},
               {"file.write('b', 'caf\\u00e9 \\u0141 a\\0b\\n')", "undefined"},
               {"file.write('c', '')", "undefined"}});
  EXPECT_EQ(contentOf("a.txt"), "new");
  EXPECT_EQ(contentOf("b"), "caf\xe9 A a b\n");
  EXPECT_TRUE(std::filesystem::exists(path("c")));
  EXPECT_EQ(contentOf("c"), "");
}

// Why nobody, root not excepted, can make this file.
std::string refusalToMake(const std::string& file) {
  errno = 0;
  if (std::FILE* made = std::fopen(file.c_str(), "w+")) std::fclose(made);
  return std::strerror(errno);
}

TEST_F(ResourcesTest, aWriteThatFailsIsLoggedAndThrown) {
  put("sub/a.txt", "x");
  std::filesystem::create_symlink("/dev/full", path("full"));
  std::filesystem::create_directory_symlink("/sys", path("locked"));
  const std::string locked = refusalToMake("/sys/new.txt");
  ASSERT_NE(locked, std::strerror(0));
  const auto fails = [](const std::string& call, const std::string& text) {
    return Step{call, "throws string " + text, {"WARNING " + text}};
  };
  expectSteps({fails("file.write('no/such.txt', 'x')", "No such file or directory"),
               fails("file.write('sub', 'x')", "Is a directory"),
               fails("file.write('', 'x')", "Is a directory"),
               fails("file.write('locked/new.txt', 'x')", locked),
               fails("file.write('full', 'waits in the buffer')", "No space left on device"),
               fails("file.write('full', 'x'.repeat(1000000))", "No space left on device"),
               {"file.write('full', '')", "undefined"},
               {"file.write('sub/a.txt', 'y')", "undefined"}});
  EXPECT_EQ(contentOf("sub/a.txt"), "y");
}

// --- include

TEST_F(ResourcesTest, includeRunsAgainInTheApplicationsContext) {
  put("sub.dir/more.js", "var count = (this.count || 0) + 1; function more() { return 'more'; }");
  expectSteps({{"include('sub.dir/more.js')", "undefined", including("sub.dir/more.js")},
               {"more() + count", "more1"},
               {"include('sub.dir/more.js')", "undefined", including("sub.dir/more.js")},
               {"count", "2"}});
}

TEST_F(ResourcesTest, includeTakesEveryNameFromTheApplicationsFolder) {
  put("sub/outer.js", "include('inner.js');");
  put("sub/inner.js", "log('wrong');");
  put("inner.js", "log('right');");
  app = run("include('sub/outer.js'); log('end');", {});
  EXPECT_THAT(app.loggedUntil("end"), ElementsAre("right"));
}

TEST_F(ResourcesTest, whatGoesWrongInAnIncludeGoesToItsCaller) {
  put("throws.js", "included = 1; throw 'thrown';");
  put("broken.js", "included = 2; nonsense (");
  expectSteps({{"include('throws.js')", "throws string thrown", including("throws.js")},
               {"include('broken.js')", "throws object SyntaxError: Unexpected end of input",
                including("broken.js")},
               {"included", "1"}});
  EXPECT_THAT(app.warnings(), ElementsAre(kNoParams));
}

TEST_F(ResourcesTest, whatNobodyCatchesIsReportedUnderItsFile) {
  put("sub/throws.js", "\nthrow 'thrown';");
  put("sub/broken.js", "\n)");
  run("include('sub/throws.js');", {}).waitForLog("sub/throws.js:2: thrown");
  put("../app2/sub/broken.js", "\n)");
  run("include('sub/broken.js');", {})
      .waitForLog("sub/broken.js:2: SyntaxError: Unexpected token ')'");
}

// A script cannot catch it: the application has no way on without its source.
TEST_F(ResourcesTest, aMissingIncludeEndsTheApplication) {
  connect(
      "morvik.start(function() { try { include('missing.js'); } catch (e) {} log('never'); }, {});",
      {});
  const zeph::ZephMsg start = device.receive();
  EXPECT_EQ(endOf(app, [&] { device.grant(start); }), killedBy(SIGTRAP));
  const std::vector<std::string> texts = app.texts();
  EXPECT_THAT(std::vector(texts.end() - 3, texts.end()),
              ElementsAre("Include: missing.js", "loading source: " + path("missing.js"),
                          "No such file or directory"));
}

// --- the lengths of paths

// The name of a file in the first application's folder whose full path has so many characters.
std::string nameFor(std::size_t length, const std::string& folder) {
  std::string name(length - folder.size(), 'n');
  for (std::size_t slash = 200; slash < name.size() - 1; slash += 200) name[slash] = '/';
  return name;
}

// The end mark counts: 511 characters for what is read and written, 254 for what is included.
TEST_F(ResourcesTest, overlongPathsAreCutLaterForFilesThanForIncludes) {
  const std::string file = nameFor(511, path(""));
  const std::string source = nameFor(254, path(""));
  put(file, "read");
  put(source, "log('included');");
  app = run("log(file.read('" + file + "').text); log(file.read('" + file + "xyz').text);" +
                "file.write('" + file + "xyz', 'written'); include('" + source + ".js');",
            {});
  EXPECT_THAT(app.logged(3), ElementsAre("read", "read", "included"));
  EXPECT_EQ(contentOf(file), "written");
  app.waitForLogTimes("getDataResource(" + path(file) + ")", 2);
  app.waitForLog("Include: " + source + ".js");
  app.waitForLog("loading source: " + path(source));
}

TEST_F(ResourcesTest, whatCanBeReadMayBeTooLongForAnInclude) {
  const std::string name = nameFor(300, path(""));
  put(name, "log('never');");
  connect("log(file.read('" + name + "').text); morvik.start(function() { include('" + name +
              "'); }, {});",
          {});
  EXPECT_EQ(app.logged(), "log('never');");
  const zeph::ZephMsg start = device.receive();
  EXPECT_EQ(endOf(app, [&] { device.grant(start); }), killedBy(SIGTRAP));
  app.waitForLog("loading source: " + path(name).substr(0, 254));
}

}  // namespace
}  // namespace morvik::test
