// Keys of a terminal, and what they ask for.
#include "terminal/key-menu.h"

#include "support/matchers.h"
#include "terminal/keys.h"

namespace morvik::test {

using namespace devkit;
namespace {

using Kind = KeyCommand::Kind;

std::vector<std::string> keysOf(std::initializer_list<std::string> pieces) {
  KeySplitter splitter;
  std::vector<std::string> keys;
  for (const std::string& piece : pieces) {
    splitter.feed(piece);
    while (const auto key = splitter.next()) keys.push_back(*key);
  }
  return keys;
}

TEST(KeySplitter, givesCharactersWhole) {
  EXPECT_THAT(keysOf({"r?", "\xc3", "\xa9x", "\r", "\x7f"}),
              ElementsAre("r", "?", "\u00e9", "x", "\n", "\x7f"));
}

TEST(KeySplitter, dropsCursorKeysAndGivesEscape) {
  EXPECT_THAT(keysOf({"a\x1b[Ab\x1bOPc\x1b[15~d", "\x1b"}),
              ElementsAre("a", "b", "c", "d", "\x1b"));
}

class KeyMenuTest : public ::testing::Test {
 protected:
  // The command of the last key; all others have none.
  static std::optional<KeyCommand> press(KeyMenu& menu, const std::string& keys) {
    KeySplitter splitter;
    splitter.feed(keys);
    std::optional<KeyCommand> command;
    while (const auto key = splitter.next()) {
      EXPECT_FALSE(command) << "before " << *key;
      command = menu.take(*key);
    }
    return command;
  }

  KeyMenu one_{{"hello"}};
  KeyMenu two_{{"hello", "clock"}};
};

TEST_F(KeyMenuTest, knowsItsKeys) {
  struct Row {
    const char* key;
    Kind kind;
  };
  for (const Row& row : {Row{"r", Kind::kRestart}, Row{"b", Kind::kButton}, Row{"p", Kind::kPage},
                         Row{"q", Kind::kQuit}, Row{"?", Kind::kHelp}}) {
    const auto command = press(one_, row.key);
    ASSERT_TRUE(command) << row.key;
    EXPECT_EQ(command->kind, row.kind) << row.key;
    EXPECT_THAT(KeyMenu::help(), HasSubstr(std::string("  ") + row.key + "  "));
  }
  EXPECT_FALSE(press(one_, "x"));
  EXPECT_EQ(one_.prompt(), "");
}

TEST_F(KeyMenuTest, asksWhichOneOfSeveral) {
  EXPECT_FALSE(press(two_, "r"));
  EXPECT_EQ(two_.prompt(), "restart  1 hello  2 clock");
  EXPECT_FALSE(press(two_, "3"));
  const auto command = press(two_, "2");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->app, 1U);
  EXPECT_EQ(two_.prompt(), "");
}

TEST_F(KeyMenuTest, asksHowToLaunch) {
  EXPECT_FALSE(press(one_, "l"));
  EXPECT_EQ(one_.prompt(), "launch hello  p plain  t by tag  v by voice");
  EXPECT_EQ(press(one_, "p")->text, "plain");
  EXPECT_EQ(press(one_, "ltd0021a\n")->text, "RFID;d0021a;1;FLAT;0;WHITE;");
  EXPECT_EQ(press(one_, "lvlight on\n")->text, "ASR;light on;");
  EXPECT_EQ(press(two_, "l2p")->app, 1U);
}

TEST_F(KeyMenuTest, takesALineForTheDevice) {
  EXPECT_FALSE(press(one_, ":ear LEFTT\x7f 5"));
  EXPECT_EQ(one_.prompt(), ":ear LEFT 5");
  const auto command = press(one_, "\n");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->kind, Kind::kStimulus);
  EXPECT_EQ(command->text, "ear LEFT 5");
}

TEST_F(KeyMenuTest, isLeftWithEscapeOrWithNothing) {
  press(two_, "l1t");
  EXPECT_EQ(two_.prompt(), "id of the tag: ");
  EXPECT_FALSE(press(two_, "\x1b"));
  EXPECT_EQ(two_.prompt(), "");
  EXPECT_FALSE(press(one_, "lv\u00e9\x7f\n"));
  EXPECT_EQ(one_.prompt(), "");
}

}  // namespace
}  // namespace morvik::test
