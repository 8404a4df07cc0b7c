// Rows of the merged log, for a pipe and on terminals of several widths.
#include "terminal/merged-view.h"

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

constexpr char kErase[] = "\r\033[K";

class MergedViewTest : public ::testing::Test {
 protected:
  MergedView plain() { return view({}); }
  MergedView view(MergedView::Style style) {
    return {[this](const std::string& bytes) { written_ += bytes; },
            std::move(style),
            {"hello", "clock2"}};
  }
  static MergedView::Style terminal(int columns) {
    return {.columns = [columns] { return columns; }};
  }
  static ViewRow row(const std::string& text) {
    return {.time = "12:00:01.123",
            .who = "hello",
            .color = 1,
            .mark = "log",
            .text = text,
            .look = RowLook::kSpoken};
  }

  std::string written_;
};

TEST_F(MergedViewTest, writesLinesForAPipe) {
  plain().show(row("I am here\nand here"));
  EXPECT_EQ(written_,
            "12:00:01.123 hello  log     I am here\n                            and here\n");
}

TEST_F(MergedViewTest, paintsEachPartForItself) {
  view({.colors = true}).show(row("one\ntwo"));
  EXPECT_EQ(
      written_,
      "\033[2m12:00:01.123 \033[0m\033[36mhello  \033[0m\033[1mlog     \033[0m\033[1mone\033[0m\n"
      "                            \033[1mtwo\033[0m\n");
}

TEST_F(MergedViewTest, breaksLongTextsBetweenWords) {
  view(terminal(80)).show(row("a text that has more words than there is room for on this line"));
  EXPECT_EQ(written_,
            "12:00:01.123 hello  log     a text that has more words than there is room for on\n"
            "                            this line\n");
}

TEST_F(MergedViewTest, leavesOutTimeAndMarkWhereThereIsNoRoom) {
  view(terminal(40)).show(row("I am here, and there is not much room"));
  EXPECT_EQ(written_, "hello  I am here, and there is not much\n       room\n");
}

TEST_F(MergedViewTest, countsWhatIsLeftOutInOneLine) {
  {
    MergedView view = this->view(terminal(40));
    view.leaveOut();
    EXPECT_EQ(written_, "1 line left out (--all)");
    view.leaveOut();
    view.show(row("here"));
  }
  EXPECT_EQ(written_, std::string("1 line left out (--all)") + kErase + "2 lines left out (--all)" +
                          kErase + "hello  here\n2 lines left out (--all)" + kErase +
                          "2 lines left out as noise; --all shows them\n");
}

TEST_F(MergedViewTest, tellsAPipeAtTheEndWhatWasLeftOut) {
  {
    MergedView view = plain();
    view.leaveOut();
    EXPECT_EQ(written_, "");
  }
  EXPECT_EQ(written_, "1 line left out as noise; --all shows them\n");
}

TEST_F(MergedViewTest, asksInTheLastLine) {
  {
    MergedView view = this->view(terminal(20));
    view.ask("a question that is long: yes");
    EXPECT_EQ(written_, "n that is long: yes");
    view.ask("");
    view.show(row("x"));
  }
  EXPECT_EQ(written_, std::string("n that is long: yes") + kErase + "hello  x\n");
}

TEST(Wrapped, keepsToTheColumns) {
  EXPECT_THAT(wrapped("", 10), ElementsAre(""));
  EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(wrapped("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
  EXPECT_THAT(wrapped("a\n\nb", 3), ElementsAre("a", "", "b"));
  EXPECT_THAT(wrapped("\u65e5\u672c\u8a9e", 4), ElementsAre("\u65e5\u672c", "\u8a9e"));
  EXPECT_THAT(wrapped("any length", 0), ElementsAre("any length"));
  EXPECT_THAT(wrapped("\u65e5", 1), ElementsAre("\u65e5"));
}

TEST(ColumnsOf, countsWideAndCombiningCharacters) {
  EXPECT_EQ(columnsOf("abc"), 3U);
  EXPECT_EQ(columnsOf("\u65e5\u672c"), 4U);
  EXPECT_EQ(columnsOf("e\u0301"), 1U);
}

}  // namespace
}  // namespace morvik::test
