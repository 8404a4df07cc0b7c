// One log made of several: rows of who says what, on a terminal or for a pipe.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace morvik::devkit {

/// How a row of the log looks to its reader.
enum class RowLook {
  kPlain,
  kSpoken,  ///< what a script says: stands out
  kFaint,   ///< for whoever looks for it
  kIn,      ///< a message from an application
  kOut,     ///< a message to one
  kWarning,
  kBad,
  kGood,
};

/// A row. All texts are fit for a terminal; only `text` may have further lines.
struct ViewRow {
  std::string time;  ///< "12:00:01.123"
  std::string who;   ///< an application's name, or another one who speaks
  int color = 0;     ///< of the name, from 1; 0 for the terminal's own
  std::string mark;  ///< a word for the kind of row, such as a level
  std::string text;
  RowLook look = RowLook::kPlain;
};

/// Writes rows one below the other. On a terminal a last line follows them, which is written anew
/// in place: a question and its answer, or how many rows were left out. Long texts are broken
/// between words, and a narrow terminal gets less in front of them.
class MergedView {
 public:
  struct Style {
    bool colors = false;
    /// The columns of the terminal at this moment; no function, or 0, for what is no terminal.
    std::function<int()> columns = {};
  };
  /// Gets what is to be written, as it stands.
  using Sink = std::function<void(const std::string& bytes)>;

  MergedView(Sink sink, Style style, const std::vector<std::string>& names);
  /// Leaves the cursor at the beginning of a line, and tells how many rows were left out.
  ~MergedView();
  MergedView(const MergedView&) = delete;
  MergedView& operator=(const MergedView&) = delete;

  void show(const ViewRow& row);
  /// A text without anything in front of it, of one or more whole lines.
  void showText(const std::string& text);
  /// One more row that nobody needs.
  void leaveOut();
  /// What is being asked; empty for nothing.
  void ask(const std::string& prompt);

 private:
  std::string prefixOf(const ViewRow& row, int columns, std::size_t& width) const;
  std::string linesOf(const ViewRow& row) const;
  std::string lastLine() const;
  std::string paint(const char* code, const std::string& text) const;
  int columns() const { return style_.columns ? style_.columns() : 0; }
  bool isTerminal() const { return columns() > 0; }
  void write(const std::string& lines);

  Sink sink_;
  Style style_;
  std::size_t nameWidth_;
  std::size_t leftOut_ = 0;
  std::string prompt_;
  bool hasLastLine_ = false;
};

/// The columns that a text takes on a terminal.
std::size_t columnsOf(std::string_view text);

/// The text in lines of so many columns at most, broken between words where that is possible. Lines
/// that it has itself stay. 0 columns break nothing.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace morvik::devkit
