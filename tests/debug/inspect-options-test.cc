// The options of morvikvm-debug, one by one.
#include "debug/inspect-options.h"

#include <vector>

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

std::string trouble;

std::optional<InspectOptions> optionsOf(std::vector<std::string> words) {
  words.insert(words.begin(), "morvikvm-debug");
  std::vector<char*> vector;
  for (std::string& word : words) vector.push_back(word.data());
  trouble.clear();
  return readInspectOptions(static_cast<int>(vector.size()), vector.data(), trouble);
}

TEST(InspectOptions, offerNothingUnlessTheyAreGiven) {
  EXPECT_FALSE(optionsOf({})->port);
  EXPECT_FALSE(optionsOf({"--debug=7", "--app_folder=x", "--inspector", "inspect"})->port);
}

TEST(InspectOptions, takeAPort) {
  EXPECT_EQ(optionsOf({"--inspect"})->port, 9229);
  EXPECT_EQ(optionsOf({"--inspect=0"})->port, 0);
  EXPECT_EQ(optionsOf({"--debug=7", "--inspect=65535"})->port, 65535);
  EXPECT_FALSE(optionsOf({"--inspect"})->breakFirst);
}

TEST(InspectOptions, askToStopBeforeTheFirstLine) {
  EXPECT_EQ(optionsOf({"--inspect-brk"})->port, 9229);
  EXPECT_TRUE(optionsOf({"--inspect-brk=9300"})->breakFirst);
  EXPECT_EQ(optionsOf({"--inspect-brk=9300"})->port, 9300);
}

TEST(InspectOptions, takeAnId) { EXPECT_EQ(optionsOf({"--inspect-id=0a-Z"})->id, "0a-Z"); }

TEST(InspectOptions, refuseWhatIsNoPortAndNoId) {
  for (const char* word :
       {"--inspect=", "--inspect=65536", "--inspect=-1", "--inspect=9229x", "--inspect-brk= 1",
        "--inspect-id=", "--inspect-id=../json", "--inspect-id=\xc3\xa4"}) {
    EXPECT_FALSE(optionsOf({word})) << word;
    EXPECT_THAT(trouble, StartsWith(word));
  }
}

}  // namespace
}  // namespace morvik::test
