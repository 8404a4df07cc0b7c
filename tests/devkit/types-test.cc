// Typings for editors, as the TypeScript compiler takes them: what is right shows nothing red, and
// what is wrong shows red at its line.
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "api/editor-files.h"
#include "desk-fixture.h"
#include "support/file-content.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

std::set<std::string> linesOf(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream input(text);
  for (std::string line; std::getline(input, line);) lines.insert(line);
  return lines;
}

// "wrong-color/main.js:3" for each line with the mark.
void addMarked(const fs::path& file, std::set<std::string>& marked) {
  std::ifstream input(file);
  int number = 0;
  for (std::string line; std::getline(input, line);) {
    ++number;
    if (line.ends_with("// red")) {
      marked.insert(file.parent_path().filename().string() + '/' + file.filename().string() + ':' +
                    std::to_string(number));
    }
  }
}

class TypesTest : public DeskTest {
 protected:
  // Copies all folders of this one, writes their typings, and gives what shows red in them.
  std::string redIn(const fs::path& folders) {
    fs::copy(folders, folder_ / "copies", fs::copy_options::recursive);
    std::vector<std::string> command{ENGINE_SHELL, SOURCE_DIR "/tests/devkit/typescript/red.js",
                                     TYPESCRIPT};
    for (const auto& entry : fs::directory_iterator(folder_ / "copies")) {
      EXPECT_EQ(run({MORVIK_DEV, "types", entry.path()}).status, 0) << entry.path();
      command.push_back(entry.path().string() + sourcesIn(entry.path()));
    }
    const ProgramResult outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return outcome.output;
  }

 private:
  // What jsconfig.json includes, each behind a ":".
  static std::string sourcesIn(const fs::path& folder) {
    std::string sources;
    for (const auto& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (name.ends_with(".js") || name.ends_with(".d.ts")) sources += ':' + name;
    }
    return sources;
  }
};

TEST_F(TypesTest, samplesAndTheirTestsShowNothingRed) { EXPECT_EQ(redIn(SOURCE_DIR "/apps"), ""); }

TEST_F(TypesTest, wrongProgramsShowRedWhereTheyAreWrong) {
  const fs::path wrong = SOURCE_DIR "/tests/devkit/typescript/wrong";
  std::set<std::string> marked;
  for (const auto& entry : fs::recursive_directory_iterator(wrong)) {
    if (entry.path().extension() == ".js") addMarked(entry.path(), marked);
  }
  EXPECT_GE(marked.size(), 25U);
  const std::string red = redIn(wrong);
  const std::set<std::string> places = linesOf(std::regex_replace(red, std::regex(": TS.*"), ""));
  EXPECT_EQ(places, marked) << red;
}

TEST_F(TypesTest, theCommittedOnesAreWhatTheTablesGive) {
  for (const auto& [name, content] : editorFiles()) {
    if (name == "jsconfig.json") continue;
    EXPECT_EQ(contentOf(fs::path(SOURCE_DIR "/types") / name), content)
        << "build/morvik-dev types --all types makes it anew";
  }
}

TEST_F(TypesTest, keepsWhatSomebodyElseWrote) {
  const fs::path app = write("mine", "");
  std::ofstream(app / "morvik.d.ts") << "declare var mine: string;\n";
  std::ofstream(app / "jsconfig.json") << "{}\n";
  const ProgramResult outcome = run({MORVIK_DEV, "types", app});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("was not made by morvik-dev types"));
  EXPECT_EQ(contentOf(app / "morvik.d.ts"), "declare var mine: string;\n");
  EXPECT_EQ(contentOf(app / "jsconfig.json"), "{}\n");
  EXPECT_TRUE(fs::exists(app / "morvik-test.d.ts"));
}

TEST_F(TypesTest, followsTheDescriptor) {
  const fs::path app = write("granted", "", "<access>led</access>");
  EXPECT_EQ(run({MORVIK_DEV, "types", app}).status, 0);
  EXPECT_THAT(contentOf(app / "morvik.d.ts"),
              AllOf(HasSubstr("ledObject"), Not(HasSubstr("earsObject"))));
  std::ofstream(app / "descriptor.xml")
      << "<descriptor><accesses><access>ears</access></accesses></descriptor>";
  EXPECT_EQ(run({MORVIK_DEV, "types", app}).status, 0);
  EXPECT_THAT(contentOf(app / "morvik.d.ts"),
              AllOf(HasSubstr("earsObject"), Not(HasSubstr("ledObject"))));
}

TEST_F(TypesTest, refusesWhatMakesNoSense) {
  EXPECT_EQ(run({MORVIK_DEV, "types"}).status, 2);
  EXPECT_EQ(run({MORVIK_DEV, "types", folder_ / "none"}).status, 2);
  const fs::path app = write("broken", "");
  std::ofstream(app / "descriptor.xml") << "<descriptor";
  const ProgramResult outcome = run({MORVIK_DEV, "types", app});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("descriptor.xml cannot be read"));
}

}  // namespace
}  // namespace morvik::test
