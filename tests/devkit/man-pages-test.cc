// The manual pages as they were built: well-formed, and with all that the programs take.
#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

#include "document-blocks.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {
namespace {

constexpr char kManFolder[] = PROGRAMS "/man/";

// A page without its markup, each run of blanks as one.
std::string readPage(const std::string& name) {
  const ProgramResult page =
      run({"/usr/bin/groff", "-man", "-Tascii", "-P-cbou", "-rLL=1000n", kManFolder + name});
  EXPECT_EQ(page.status, 0);
  return std::regex_replace(page.output, std::regex("\\s+"), " ");
}

std::set<std::string> wordsIn(const std::string& text, const char* pattern) {
  const std::regex word(pattern);
  std::set<std::string> words;
  for (std::sregex_iterator found(text.begin(), text.end(), word), end; found != end; ++found) {
    words.insert(found->str(1));
  }
  return words;
}

std::string helpOf(const std::string& verb) { return run({MORVIK_DEV, "help", verb}).output; }

TEST(ManPages, holdWhatGroffUnderstands) {
  for (const char* name : {"morvikvm.1", "morvik.service.8", "morvik-dev.1"}) {
    const ProgramResult result = run({"/usr/bin/groff", "-man", "-ww", "-z", "-Tutf8", "-Kutf8",
                                      std::string(kManFolder) + name});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "") << name;
  }
}

TEST(ManPages, tellOfEachVerbWithItsOptions) {
  const std::string page = readPage("morvik-dev.1");
  const auto verbs = wordsIn(run({MORVIK_DEV, "help"}).output, R"(\n  ([a-z]+)  )");
  EXPECT_THAT(verbs, IsSupersetOf({"run", "device", "check", "help"}));
  for (const std::string& verb : verbs) {
    if (verb == "help") continue;
    const std::size_t at = page.find(" morvik-dev " + verb + ' ');
    ASSERT_NE(at, std::string::npos) << verb;
    const auto options = wordsIn(helpOf(verb), R"(\n  (-[^ ]+( --[^ ]+)?) )");
    EXPECT_THAT(options, Contains("-h, --help")) << verb;
    for (const std::string& option : options) {
      EXPECT_NE(page.find(' ' + option + ' ', at), std::string::npos) << verb << ' ' << option;
    }
  }
}

TEST(ManPages, tellOfEachOptionOfTheHost) {
  const std::string page = readPage("morvikvm.1");
  const auto options =
      wordsIn(contentOf(SOURCE_DIR "/src/host/launch-options.cc"), R"re("(--[a-z_]+=)")re");
  EXPECT_THAT(options, SizeIs(3));
  for (const std::string& option : options) EXPECT_THAT(page, HasSubstr(' ' + option));
}

}  // namespace
}  // namespace morvik::test
