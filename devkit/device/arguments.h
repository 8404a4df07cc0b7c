// The arguments of one stimulus, read by its table from words or from names.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "device/stimulus.h"

namespace morvik::devkit {

/// First filled, from one source; then asked. The first trouble is kept.
class Arguments {
 public:
  using Given = std::map<std::string, std::vector<std::string>>;

  /// The rows must outlive this.
  explicit Arguments(std::span<const Argument> rows) : rows_(rows) {}

  /// Reads the words of a line. Those that are too many are left.
  void fromWords(std::vector<std::string> words);
  /// Reads values by name. A name that no row has is trouble.
  void fromNames(const Given& given);

  /// Whether it was given; what stands in for it does not count.
  bool has(const std::string& name) const { return values_.contains(name); }
  /// Its value, what stands in for it, or the empty text. A choice is spelled as its row spells it.
  std::string text(const std::string& name) const;
  /// The same as a number: 0 for an empty one.
  int number(const std::string& name) const;
  /// All values of one that there may be many of.
  std::vector<std::string> all(const std::string& name) const;

  /// The words that were not read.
  const std::vector<std::string>& left() const { return words_; }
  /// Empty when there is none.
  const std::string& trouble() const { return trouble_; }
  /// All that was given, for those who read along: without secrets.
  Given shown() const;

 private:
  void takeNamed(const Argument& row);
  void takeWords(const Argument& row);
  void add(const Argument& row, const std::string& word);
  void addChoice(const Argument& row, const std::string& word);
  void addNumber(const Argument& row, const std::string& word);
  void addPair(const Argument& row, const std::string& word);
  void missing(const Argument& row);
  void refuse(const std::string& trouble);
  const Argument* find(const std::string& name) const;

  std::span<const Argument> rows_;
  std::vector<std::string> words_;
  Given values_;
  std::string trouble_;
};

/// As the help names it: "STEP", or its choices.
std::string usageOf(const Argument& row);
/// As a sentence or a form names it: "the step".
std::string whatOf(const Argument& row);

}  // namespace morvik::devkit
