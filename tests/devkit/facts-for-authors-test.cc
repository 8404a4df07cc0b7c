// docs/facts-for-authors.md: what it says is not there is not there, in a script on the real host.
#include <regex>
#include <sstream>

#include "desk-fixture.h"
#include "support/file-content.h"
#include "support/program.h"

namespace morvik::test {
namespace {

// The names in the first column of the table, as a list in JavaScript.
std::string namesThatAreNotThere() {
  static const std::regex row(R"(\| (`.+?) \| .*)");
  static const std::regex name("`([A-Za-z]+)`");
  const std::string page = contentOf(SOURCE_DIR "/docs/facts-for-authors.md");
  std::istringstream lines(page.substr(0, page.find("Other things are there")));
  std::string names;
  std::smatch cells;
  for (std::string line; std::getline(lines, line);) {
    if (!std::regex_match(line, cells, row)) continue;
    const std::string cell = cells.str(1);
    for (std::sregex_iterator found(cell.begin(), cell.end(), name), end; found != end; ++found) {
      names += '\'' + found->str(1) + "',";
    }
  }
  return '[' + names + ']';
}

class FactsForAuthors : public DeskTest {};

// Syntax has no name to ask for; the console is there and says nothing.
TEST_F(FactsForAuthors, nameWhatAScriptDoesNotHave) {
  const std::string names = namesThatAreNotThere();
  EXPECT_THAT(names,
              AllOf(HasSubstr("'setInterval'"), HasSubstr("'fetch'"), HasSubstr("'global'")));
  write("asking", "var there = " + names + R"js(.filter(function (name) {
  return globalThis[name] !== undefined;
});
console.log('nobody hears this');
log('there: ' + there.join(' ') + '.');
)js");
  Program program(command({folder_ / "asking"}));
  const std::string said = program.waitFor(" log     there: ");
  EXPECT_THAT(program.waitForLine(said.find(" log     there: ")), HasSubstr("there: console."));
  EXPECT_THAT(program.output(), Not(HasSubstr("nobody hears this")));
  program.signal(SIGINT);
  EXPECT_EQ(program.waitForEnd(), 0);
}

}  // namespace
}  // namespace morvik::test
