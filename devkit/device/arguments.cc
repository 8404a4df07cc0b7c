// Words and names to values, with one look of trouble.
#include "device/arguments.h"

#include <algorithm>
#include <utility>

#include "device/owned.h"
#include "device/secrets.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

using Kind = Argument::Kind;

bool same(const std::string& choice, const std::string& word, Kind kind) {
  return kind == Kind::kName ? choice == word
                             : g_ascii_strcasecmp(choice.c_str(), word.c_str()) == 0;
}

// The choice that a word means; nothing when it means none.
std::optional<std::string> chosen(const Argument& row, const std::string& word) {
  if (row.choices == nullptr) return std::nullopt;
  for (const std::string& choice : row.choices()) {
    if (same(choice, word, row.kind)) return choice;
  }
  return std::nullopt;
}

}  // namespace

std::string usageOf(const Argument& row) {
  return row.usage != nullptr ? row.usage : joined(row.choices(), '|');
}

std::string whatOf(const Argument& row) { return row.what != nullptr ? row.what : usageOf(row); }

// The named ones first: they may stand anywhere between the others.
void Arguments::fromWords(std::vector<std::string> words) {
  words_ = std::move(words);
  for (const Argument& row : rows_) {
    if (row.form == Argument::Form::kNamed) takeNamed(row);
  }
  for (const Argument& row : rows_) {
    if (row.form == Argument::Form::kWord) takeWords(row);
  }
}

void Arguments::takeNamed(const Argument& row) {
  const std::string start = std::string(row.name) + '=';
  auto at = words_.begin();
  while ((at = std::find_if(at, words_.end(), [&](const std::string& word) {
            return word.starts_with(start);
          })) != words_.end()) {
    add(row, at->substr(start.size()));
    at = words_.erase(at);
    if (!row.many) return;
  }
}

void Arguments::takeWords(const Argument& row) {
  const bool standsHere = row.standsIn == nullptr || row.standsIn(words_);
  if (row.many) {
    for (const std::string& word : std::exchange(words_, {})) add(row, word);
  } else if (!words_.empty() && standsHere) {
    const std::string word = std::move(words_.front());
    words_.erase(words_.begin());
    add(row, word);
  } else {
    missing(row);
  }
}

void Arguments::fromNames(const Given& given) {
  for (const auto& [name, values] : given) {
    if (find(name) != nullptr) continue;
    std::vector<std::string> names;
    for (const Argument& row : rows_) names.emplace_back(row.name);
    refuse(thereIsNo("argument " + cited(name), names));
  }
  for (const Argument& row : rows_) {
    const auto found = given.find(row.name);
    if (found == given.end() || found->second.empty()) {
      missing(row);
    } else if (found->second.size() > 1 && !row.many) {
      refuse("there is one " + std::string(row.name) + " and no list of them");
    } else {
      for (const std::string& value : found->second) add(row, value);
    }
  }
}

void Arguments::add(const Argument& row, const std::string& word) {
  switch (row.kind) {
    case Kind::kId:
      if (word.empty()) refuse(whatOf(row) + " is empty");
      [[fallthrough]];
    case Kind::kText:
      values_[row.name].push_back(word);
      return;
    case Kind::kNumber:
      return addNumber(row, word);
    case Kind::kChoice:
    case Kind::kName:
      return addChoice(row, word);
    case Kind::kPair:
      return addPair(row, word);
  }
}

void Arguments::addNumber(const Argument& row, const std::string& word) {
  const auto choice = chosen(row, word);
  const bool is = choice || g_ascii_string_to_signed(word.c_str(), 10, row.least, row.most, nullptr,
                                                     nullptr) != FALSE;
  if (!is) {
    refuse(cited(word) + " is no number from " + std::to_string(row.least) + " to " +
           std::to_string(row.most));
  }
  values_[row.name].push_back(choice.value_or(is ? word : std::to_string(row.least)));
}

void Arguments::addChoice(const Argument& row, const std::string& word) {
  const std::vector<std::string> choices = row.choices();
  const auto choice = chosen(row, word);
  if (!choice && row.kind == Kind::kName) {
    refuse(thereIsNo(std::string(row.called) + ' ' + cited(word), choices));
  } else if (!choice) {
    refuse(cited(word) + " is none of " + joined(choices, row.what != nullptr ? ' ' : '|'));
  }
  values_[row.name].push_back(choice.value_or(choices.front()));
}

// A name that is wrong is not repeated: it may be the piece of a secret value that was cut by a
// blank.
void Arguments::addPair(const Argument& row, const std::string& word) {
  const std::size_t equals = word.find('=');
  const std::vector<std::string> names = row.choices();
  if (equals == std::string::npos) {
    refuse("a " + std::string(row.called) +
           " is given as NAME=VALUE, in quotes when there is a blank in it");
  } else if (std::find(names.begin(), names.end(), word.substr(0, equals)) == names.end()) {
    refuse(thereIsNo(std::string(row.called) + " of that name", names));
  } else {
    values_[row.name].push_back(word);
  }
}

void Arguments::missing(const Argument& row) {
  if (row.needed) refuse(whatOf(row) + " is missing");
}

void Arguments::refuse(const std::string& trouble) {
  if (trouble_.empty()) trouble_ = trouble;
}

const Argument* Arguments::find(const std::string& name) const {
  const auto found = std::find_if(rows_.begin(), rows_.end(),
                                  [&](const Argument& row) { return name == row.name; });
  return found != rows_.end() ? &*found : nullptr;
}

std::string Arguments::text(const std::string& name) const {
  const auto found = values_.find(name);
  if (found != values_.end()) return found->second.front();
  const Argument* row = find(name);
  return row != nullptr && row->byDefault != nullptr ? row->byDefault : "";
}

int Arguments::number(const std::string& name) const {
  return static_cast<int>(g_ascii_strtoll(text(name).c_str(), nullptr, 10));
}

std::vector<std::string> Arguments::all(const std::string& name) const {
  const auto found = values_.find(name);
  return found != values_.end() ? found->second : std::vector<std::string>{};
}

Arguments::Given Arguments::shown() const {
  Given shown = values_;
  for (const Argument& row : rows_) {
    const auto found = shown.find(row.name);
    if (!row.secret || found == shown.end()) continue;
    for (std::string& value : found->second) {
      const std::size_t equals = row.kind == Kind::kPair ? value.find('=') : std::string::npos;
      value = equals != std::string::npos ? value.substr(0, equals) : kSecret;
    }
  }
  return shown;
}

}  // namespace morvik::devkit
