// The blocks of code in a document, and what a reader would do with them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace morvik::test {

/// A fenced block, an indented one, or a comment that begins with "console" or "file", which
/// readers do not see: it prepares what a document takes for granted.
struct DocumentBlock {
  std::size_t line;                ///< where it stands, from 1
  std::vector<std::string> words;  ///< behind the fence: "console", "stays"; none when indented
  std::vector<std::string> lines;

  [[nodiscard]] bool has(const std::string& word) const;
  /// What follows "name=" in one of the words.
  [[nodiscard]] std::optional<std::string> value(const std::string& name) const;
};

std::vector<DocumentBlock> blocksOf(const std::string& markdown);

/// A line behind "$ " of a console block, and the lines that it prints. Output in front of the
/// first command stands with an empty command.
struct DocumentedCommand {
  std::string text;
  std::vector<std::string> output;
};

std::vector<DocumentedCommand> commandsOf(const DocumentBlock& block);

/// Looks for the documented lines at the beginning of what was printed, and gives the number of
/// printed lines that they take. In a documented line "..." stands for any text, and alone for any
/// lines. Times, ports and the page's token may differ.
std::optional<std::size_t> findOutput(const std::vector<std::string>& documented,
                                      const std::vector<std::string>& printed);

/// The whole lines of a text.
std::vector<std::string> wholeLinesOf(const std::string& text);

}  // namespace morvik::test
