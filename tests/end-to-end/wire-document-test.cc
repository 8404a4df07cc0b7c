// The conversation that docs/wire.md shows in bytes, held with the real program: the server's side
// as it stands there, and the application's side compared with it.

#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/file-content.h"
#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr std::size_t kIdLength = 36;

// One line of the conversation: who speaks, and the words behind it up to the comment.
struct Line {
  char speaker;
  std::string words;
};

// What stands in the document's code block of that language.
std::string block(const std::string& language) {
  const std::string text = test::contentOf(std::filesystem::path(SOURCE_DIR) / "docs/wire.md");
  const std::string opening = "```" + language + "\n";
  const auto begin = text.find(opening);
  if (begin == std::string::npos) throw std::runtime_error("no block: " + language);
  const auto end = text.find("```", begin + opening.size());
  return text.substr(begin + opening.size(), end - begin - opening.size());
}

// What each line holds: `> bytes  # comment`, `< bytes  # comment` or `* text`.
std::vector<Line> conversation() {
  std::istringstream text(block("conversation"));
  std::vector<Line> lines;
  for (std::string line; std::getline(text, line);) {
    if (line.empty()) continue;
    lines.push_back({line[0], line.substr(2, line.find("  #") - 2)});
  }
  return lines;
}

class WireDocumentTest : public DeviceTest {
 protected:
  void hold(const Line& line) {
    switch (line.speaker) {
      case '>':
        return expectSent(line.words);
      case '<':
        return device.sendBytes(bytesOf(line.words));
      case '*':
        return expectLogged(line.words);
      default:
        FAIL() << "nobody speaks: " << line.words;
    }
  }

 private:
  void expectLogged(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    EXPECT_EQ(app.logged(), text);
  }

  // Word by word, so that a name is learned where the application first uses its id.
  void expectSent(const std::string& words) {
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
      if (word[0] == '{' && !ids_.contains(word)) {
        learn(word, device.receiveBytes(kIdLength));
      } else {
        const std::string expected = bytesOf(word);
        EXPECT_EQ(device.receiveBytes(expected.size()), expected) << words;
      }
    }
  }

  void learn(const std::string& name, const std::string& id) {
    EXPECT_THAT(id, testing::MatchesRegex(kUuid)) << name;
    EXPECT_THAT(ids_, testing::Not(testing::Contains(testing::Pair(testing::_, id)))) << name;
    ids_[name] = id;
  }

  [[nodiscard]] std::string bytesOf(const std::string& words) const {
    std::istringstream stream(words);
    std::string bytes;
    for (std::string word; stream >> word;) {
      bytes += word[0] == '{' ? ids_.at(word)
                              : std::string(1, static_cast<char>(std::stoi(word, nullptr, 16)));
    }
    return bytes;
  }

  std::map<std::string, std::string> ids_;
};

TEST_F(WireDocumentTest, theConversationIsHeldAsItStandsThere) {
  app = run(block("js"), {"led", "button"});
  device = server.accept();
  const std::vector<Line> lines = conversation();
  for (const char speaker : {'>', '<', '*'}) {
    ASSERT_THAT(lines, testing::Contains(testing::Field(&Line::speaker, speaker)));
  }
  for (const Line& line : lines) hold(line);
  app.waitForLog("interactive mode stopped, autokill in 300000ms");
  EXPECT_TRUE(device.quiet());  // what the application has sent is all there
}

}  // namespace
}  // namespace morvik::test
