// The command line: prefixes, defaults, and what a bad value means.
#include "host/launch-options.h"

#include <string>
#include <vector>

#include "support/matchers.h"

namespace morvik::test {
namespace {

TEST(LaunchOptionsTest, anOptionsValueIsWhatStandsBehindItsPrefix) {
  const struct {
    const char* argument;
    const char* value;  // null: no match
  } rows[] = {
      {"--debug=5", "5"},     {"--debug=", ""},        {"--debug==5", "=5"},  {"--debug", nullptr},
      {"--Debug=5", nullptr}, {" --debug=5", nullptr}, {"-debug=5", nullptr}, {"", nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.argument);
    EXPECT_STREQ(optionValue(row.argument, "--debug="), row.value);
  }
}

// Keeps the vector alive, as the options point into it.
struct CommandLine {
  explicit CommandLine(std::vector<std::string> arguments) : words(std::move(arguments)) {
    for (std::string& word : words) vector.push_back(word.data());
    parseOptions(static_cast<int>(vector.size()), vector.data(), options);
  }
  std::vector<std::string> words;
  std::vector<char*> vector;
  LaunchOptions options;
};

TEST(LaunchOptionsTest, everyEntryIsReadAndTheLastOneWins) {
  const struct {
    std::vector<std::string> arguments;
    int debug;
    const char* appFolder;
    const char* libFolder;
  } rows[] = {
      {{}, 7, "", nullptr},
      {{"morvikvm"}, 7, "", nullptr},
      {{"--debug=3"}, 3, "", nullptr},  // the program's name is looked at too
      {{"morvikvm", "--debug=3"}, 3, "", nullptr},
      {{"morvikvm", "--debug="}, 0, "", nullptr},
      {{"morvikvm", "--debug=abc"}, 0, "", nullptr},
      {{"morvikvm", "--debug=5x"}, 5, "", nullptr},
      {{"morvikvm", "--debug=2.9"}, 2, "", nullptr},
      {{"morvikvm", "--debug= 4"}, 4, "", nullptr},
      {{"morvikvm", "--debug=-3"}, -3, "", nullptr},
      {{"morvikvm", "--debug=+6"}, 6, "", nullptr},
      {{"morvikvm", "--debug=3", "--debug=5"}, 5, "", nullptr},
      {{"morvikvm", "--debug"}, 7, "", nullptr},
      {{"morvikvm", "--debug", "3"}, 7, "", nullptr},
      {{"morvikvm", "--DEBUG=3", "-x", "", "--help"}, 7, "", nullptr},
      {{"morvikvm", "--app_folder=/a b/"}, 7, "/a b/", nullptr},
      {{"morvikvm", "--app_folder="}, 7, "", nullptr},
      {{"morvikvm", "--app_folder=/a", "--app_folder=/b"}, 7, "/b", nullptr},
      {{"morvikvm", "--app-folder=/a"}, 7, "", nullptr},
      {{"morvikvm", "--lib_folder=/l"}, 7, "", "/l"},
      {{"morvikvm", "--lib_folder="}, 7, "", ""},
      {{"morvikvm", "--lib_folder=/l", "--debug=1", "--app_folder=/a"}, 1, "/a", "/l"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    const CommandLine line(row.arguments);
    EXPECT_EQ(line.options.debug, row.debug);
    EXPECT_STREQ(line.options.app_folder, row.appFolder);
    EXPECT_STREQ(line.options.lib_folder, row.libFolder);
  }
}

TEST(LaunchOptionsTest, foldersPointIntoTheArgumentVector) {
  const CommandLine line({"morvikvm", "--app_folder=/a", "--lib_folder=/l"});
  EXPECT_EQ(line.options.app_folder, line.vector[1] + std::string("--app_folder=").size());
  EXPECT_EQ(line.options.lib_folder, line.vector[2] + std::string("--lib_folder=").size());
}

}  // namespace
}  // namespace morvik::test
