// Source text: its path, its bytes, and the fatal end when there is none.
#include "host/source.h"

#include <csignal>

#include "host/app-files.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class SourceTest : public ScriptTest {
 protected:
  SourceTest() { options.app_folder = files.root(); }

  std::string load(const char* file) {
    const v8::Context::Scope entered(context());
    return *v8::String::Utf8Value(isolate(), loadSource(instance, file));
  }

  AppFiles files;
};

TEST_F(SourceTest, isReadFromTheApplicationsFolder) {
  files.write("main.js", "log(1);\n");
  EXPECT_EQ(load("main.js"), "log(1);\n");
  EXPECT_THAT(log.lines(),
              ElementsAre(LogLine{G_LOG_LEVEL_DEBUG, "loading source: " + files.path("main.js")}));
}

TEST_F(SourceTest, endsAtItsFirstZeroByte) {
  const std::string bytes("before\0behind", 13);
  files.write("main.js", bytes);
  EXPECT_EQ(readSource(files.path("main.js")), bytes);
  EXPECT_EQ(load("main.js"), "before");
}

TEST_F(SourceTest, isReadAsUtf8) {
  const struct {
    std::string bytes;
    const char* text;
  } rows[] = {
      {"", ""},
      {std::string("\0x", 2), ""},
      {"caf\xc3\xa9", "caf\xc3\xa9"},
      {"a\xff"
       "b",
       "a\xef\xbf\xbd"
       "b"},
      {"a\r\nb", "a\r\nb"},
  };
  for (const auto& row : rows) {
    files.write("main.js", row.bytes);
    EXPECT_EQ(load("main.js"), row.text);
  }
}

TEST_F(SourceTest, aLongFileIsReadWhole) {
  const std::string bytes(1000000, 'x');
  files.write("main.js", bytes);
  EXPECT_EQ(load("main.js"), bytes);
}

TEST_F(SourceTest, aFileThatCannotBeReadIsFatalWithTheSystemsText) {
  EXPECT_EXIT(load("main.js"), KilledBySignal(SIGTRAP), "fatal: No such file or directory\n");
  EXPECT_EXIT(load("../app"), KilledBySignal(SIGTRAP), "fatal: Is a directory\n");
  files.writeUnopenable("main.js");
  EXPECT_EXIT(load("main.js"), KilledBySignal(SIGTRAP), "fatal: No such device or address\n");
}

TEST_F(SourceTest, aPathThatIsTooLongIsCut) {
  const std::string cut(254 - files.path("").size(), 'x');
  files.write(cut, "the file of the cut name");
  EXPECT_EQ(load((cut + "yyy").c_str()), "the file of the cut name");
}

}  // namespace
}  // namespace morvik::test
