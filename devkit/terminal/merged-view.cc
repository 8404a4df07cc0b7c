// Rows to lines, and the last line below them.
#include "terminal/merged-view.h"

#include <glib.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvik::devkit {
namespace {

constexpr std::size_t kLongestName = 16;
constexpr std::size_t kMarkWidth = 7;
// Below so many columns a row shows neither the time nor the mark.
constexpr int kNarrow = 72;
// A text that is left less room is broken by the terminal, wherever it likes.
constexpr std::size_t kLeastText = 20;

constexpr char kEraseLine[] = "\r\033[K";

// Readable on light and on dark ground.
constexpr const char* kNameColors[] = {"36", "35", "33", "34", "32"};

const char* codeOf(RowLook look) {
  switch (look) {
    case RowLook::kPlain:
      return "";
    case RowLook::kSpoken:
      return "1";
    case RowLook::kFaint:
      return "2";
    case RowLook::kIn:
      return "36";
    case RowLook::kOut:
      return "32";
    case RowLook::kWarning:
      return "33";
    case RowLook::kBad:
      return "1;31";
    case RowLook::kGood:
      return "1;32";
  }
  return "";
}

std::size_t columnsOfCharacter(gunichar character) {
  if (g_unichar_iszerowidth(character) != FALSE) return 0;
  return g_unichar_iswide(character) != FALSE ? 2 : 1;
}

std::string padded(const std::string& text, std::size_t columns) {
  const std::size_t width = columnsOf(text);
  return width < columns ? text + std::string(columns - width, ' ') : text;
}

std::string linesInWords(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " line" : " lines");
}

// Where a line of the text ends that has so many columns at most.
std::size_t breakOf(std::string_view text, std::size_t columns) {
  std::size_t width = 0;
  std::size_t at = 0;
  std::size_t blank = 0;
  while (at < text.size()) {
    const char* here = text.data() + at;
    if (*here == ' ' && at > 0) blank = at;
    width += columnsOfCharacter(g_utf8_get_char(here));
    if (width > columns && at > 0) return blank > 0 ? blank : at;
    at = std::min(text.size(), at + static_cast<std::size_t>(g_utf8_next_char(here) - here));
  }
  return at;
}

void wrapLine(std::string_view line, std::size_t columns, std::vector<std::string>& lines) {
  do {
    const std::size_t end = columns > 0 ? breakOf(line, columns) : line.size();
    lines.emplace_back(line.substr(0, end));
    line.remove_prefix(end < line.size() && line[end] == ' ' ? end + 1 : end);
  } while (!line.empty());
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char* here = text.data() + at;
    width += columnsOfCharacter(g_utf8_get_char(here));
    at += static_cast<std::size_t>(g_utf8_next_char(here) - here);
  }
  return width;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    wrapLine(text.substr(at, end - at), columns, lines);
    at = end + 1;
  }
  return lines;
}

MergedView::MergedView(Sink sink, Style style, const std::vector<std::string>& names)
    : sink_(std::move(sink)), style_(std::move(style)), nameWidth_(0) {
  for (const std::string& name : names) {
    nameWidth_ = std::max(nameWidth_, std::min(columnsOf(name), kLongestName));
  }
}

MergedView::~MergedView() {
  prompt_.clear();
  const std::size_t count = std::exchange(leftOut_, 0);
  const std::string words = linesInWords(count) + " left out as noise; --all shows them";
  write(count > 0 ? paint("2", words) + "\n" : "");
}

void MergedView::show(const ViewRow& row) { write(linesOf(row)); }

void MergedView::showText(const std::string& text) { write(text); }

void MergedView::leaveOut() {
  ++leftOut_;
  if (isTerminal()) write("");
}

void MergedView::ask(const std::string& prompt) {
  if (prompt == prompt_) return;
  prompt_ = prompt;
  if (isTerminal()) write("");
}

// Whole lines, in the place of the last line, which follows them again.
void MergedView::write(const std::string& lines) {
  std::string bytes = hasLastLine_ ? kEraseLine : "";
  bytes += lines;
  const std::string last = isTerminal() ? lastLine() : "";
  hasLastLine_ = !last.empty();
  bytes += last;
  if (!bytes.empty()) sink_(bytes);
}

// What is typed at the end of a long line must be seen, so the line loses its beginning.
std::string MergedView::lastLine() const {
  const auto room = static_cast<std::size_t>(std::max(columns() - 1, 1));
  if (!prompt_.empty()) {
    std::string_view end = prompt_;
    while (columnsOf(end) > room)
      end.remove_prefix(static_cast<std::size_t>(g_utf8_next_char(end.data()) - end.data()));
    return paint("1", std::string(end));
  }
  if (leftOut_ == 0) return "";
  const std::string words = linesInWords(leftOut_) + " left out (--all)";
  return paint("2", wrapped(words, room).front());
}

std::string MergedView::paint(const char* code, const std::string& text) const {
  if (!style_.colors || *code == '\0' || text.empty()) return text;
  return "\033[" + std::string(code) + 'm' + text + "\033[0m";
}

std::string MergedView::prefixOf(const ViewRow& row, int columns, std::size_t& width) const {
  const bool narrow = columns > 0 && columns < kNarrow;
  const std::string name = padded(row.who, nameWidth_) + ' ';
  const std::string mark = narrow ? "" : padded(row.mark, kMarkWidth) + ' ';
  const std::string time = narrow ? "" : row.time + ' ';
  width = columnsOf(name) + columnsOf(mark) + columnsOf(time);
  const auto colors = std::size(kNameColors);
  const char* color =
      row.color > 0 ? kNameColors[static_cast<std::size_t>(row.color - 1) % colors] : "";
  return paint("2", time) + paint(color, name) + paint(codeOf(row.look), mark);
}

// Every line is painted for itself, so that a line that is copied or cut leaves no colour behind.
std::string MergedView::linesOf(const ViewRow& row) const {
  std::size_t indent = 0;
  const int wide = columns();
  std::string text = prefixOf(row, wide, indent);
  const std::size_t room = static_cast<std::size_t>(wide) >= indent + kLeastText
                               ? static_cast<std::size_t>(wide) - indent
                               : 0;
  bool first = true;
  for (const std::string& line : wrapped(row.text, room)) {
    if (!first) text += std::string(indent, ' ');
    text += paint(codeOf(row.look), line) + '\n';
    first = false;
  }
  return text;
}

}  // namespace morvik::devkit
