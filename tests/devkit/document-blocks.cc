#include "document-blocks.h"

#include <algorithm>
#include <regex>
#include <span>
#include <sstream>

namespace morvik::test {
namespace {

constexpr char kAnything[] = "...";
constexpr char kPrompt[] = "$ ";
constexpr char kIndent[] = "    ";

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// Reads a document line by line.
class BlockReader {
 public:
  void take(const std::string& line) {
    ++number_;
    if (!end_.empty()) return takeInside(line);
    if (line.starts_with("```")) return open(line.substr(3), "```");
    if (line.starts_with("<!-- console") || line.starts_with("<!-- file ")) {
      return open(line.substr(5), "-->");
    }
    if (line.starts_with(kIndent)) return takeIndented(line.substr(sizeof kIndent - 1));
    indented_ = false;
  }
  std::vector<DocumentBlock> finish() { return std::move(blocks_); }

 private:
  void open(const std::string& words, const std::string& end) {
    blocks_.push_back({number_, wordsOf(words), {}});
    end_ = end;
    indented_ = false;
  }
  void takeInside(const std::string& line) {
    if (line == end_) return end_.clear();
    blocks_.back().lines.push_back(line);
  }
  void takeIndented(const std::string& line) {
    if (!indented_) blocks_.push_back({number_, {}, {}});
    indented_ = true;
    blocks_.back().lines.push_back(line);
  }

  std::vector<DocumentBlock> blocks_;
  std::size_t number_ = 0;
  std::string end_;  // of the block that is open, or empty
  bool indented_ = false;
};

// What differs from one run to the next.
std::string withoutChance(const std::string& line) {
  static const std::regex time(R"(\d\d:\d\d:\d\d\.\d\d\d)");
  static const std::regex port(R"(127\.0\.0\.1:\d+)");
  static const std::regex token("[0-9a-f]{32}");
  const std::string timeless = std::regex_replace(line, time, "TIME");
  return std::regex_replace(std::regex_replace(timeless, port, "PORT"), token, "TOKEN");
}

bool lineFits(const std::string& documented, const std::string& printed) {
  std::size_t at = 0;
  std::size_t from = 0;
  for (std::size_t gap = documented.find(kAnything); gap != std::string::npos;
       gap = documented.find(kAnything, from)) {
    const std::string piece = documented.substr(from, gap - from);
    const std::size_t found = printed.find(piece, at);
    if (found == std::string::npos || (from == 0 && found != 0)) return false;
    at = found + piece.size();
    from = gap + sizeof kAnything - 1;
  }
  if (from == 0) return documented == printed;
  const std::string last = documented.substr(from);
  return printed.size() >= at + last.size() && printed.ends_with(last);
}

using TextLines = std::vector<std::string>;

// Looks for lines that follow each other, at `from` or anywhere behind it; gives the number of the
// printed line behind them.
std::optional<std::size_t> findTogether(std::span<const std::string> documented,
                                        std::span<const std::string> printed, std::size_t from,
                                        bool anywhere) {
  for (std::size_t at = from; at + documented.size() <= printed.size(); ++at) {
    const auto here = printed.subspan(at, documented.size());
    if (std::ranges::equal(documented, here, lineFits)) return at + documented.size();
    if (!anywhere) break;
  }
  return std::nullopt;
}

std::optional<std::size_t> findAll(std::span<const std::string> documented,
                                   std::span<const std::string> printed) {
  std::size_t at = 0;
  while (!documented.empty()) {
    const bool anywhere = documented.front() == kAnything;
    if (anywhere) documented = documented.subspan(1);
    const auto gap = std::ranges::find(documented, kAnything);
    const auto size = static_cast<std::size_t>(gap - documented.begin());
    const auto end = findTogether(documented.first(size), printed, at, anywhere);
    if (!end) return std::nullopt;
    at = *end;
    documented = documented.subspan(size);
  }
  return at;
}

TextLines withoutChance(TextLines lines) {
  for (std::string& line : lines) line = withoutChance(line);
  return lines;
}

}  // namespace

bool DocumentBlock::has(const std::string& word) const {
  return std::ranges::find(words, word) != words.end();
}

std::optional<std::string> DocumentBlock::value(const std::string& name) const {
  for (const std::string& word : words) {
    if (word.starts_with(name + '=')) return word.substr(name.size() + 1);
  }
  return std::nullopt;
}

std::vector<DocumentBlock> blocksOf(const std::string& markdown) {
  BlockReader reader;
  for (const std::string& line : wholeLinesOf(markdown)) reader.take(line);
  return reader.finish();
}

std::vector<DocumentedCommand> commandsOf(const DocumentBlock& block) {
  std::vector<DocumentedCommand> commands;
  for (const std::string& line : block.lines) {
    if (line.starts_with(kPrompt)) {
      commands.push_back({line.substr(sizeof kPrompt - 1), {}});
    } else {
      if (commands.empty()) commands.emplace_back();
      commands.back().output.push_back(line);
    }
  }
  return commands;
}

std::optional<std::size_t> findOutput(const TextLines& documented, const TextLines& printed) {
  return findAll(withoutChance(documented), withoutChance(printed));
}

TextLines wholeLinesOf(const std::string& text) {
  TextLines lines;
  std::size_t from = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', from)) {
    lines.push_back(text.substr(from, end - from));
    from = end + 1;
  }
  return lines;
}

}  // namespace morvik::test
