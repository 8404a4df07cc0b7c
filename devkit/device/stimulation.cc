// Words read, with one look of trouble.
#include "device/stimulation.h"

#include <algorithm>
#include <utility>

#include "device/describe.h"
#include "device/owned.h"

namespace morvik::devkit {

std::string thereIsNo(const std::string& what, const std::vector<std::string>& names) {
  return "there is no " + what + (names.size() == 1 ? "; there is " : "; there are ") +
         listed(names);
}

Stimulation::Stimulation(Device& device, std::optional<AppNumber> only,
                         std::vector<std::string> words)
    : device_(device), only_(only), words_(std::move(words)) {}

std::string Stimulation::text(const std::string& what) {
  if (words_.empty()) {
    refuse(what + " is missing");
    return "";
  }
  std::string word = std::move(words_.front());
  words_.erase(words_.begin());
  return word;
}

std::string Stimulation::id(const std::string& what) {
  const bool given = hasMore();
  std::string word = text(what);
  if (given && word.empty()) refuse(what + " is empty");
  return word;
}

int Stimulation::number(const std::string& what, int least, int most) {
  return numberFrom(text(what), least, most);
}

int Stimulation::numberFrom(const std::string& word, int least, int most) {
  gint64 number = least;
  if (g_ascii_string_to_signed(word.c_str(), 10, least, most, &number, nullptr) == FALSE) {
    refuse(cited(word) + " is no number from " + std::to_string(least) + " to " +
           std::to_string(most));
  }
  return static_cast<int>(number);
}

std::size_t Stimulation::oneOf(std::initializer_list<const char*> words) {
  std::string all;
  for (const char* one : words) all += (all.empty() ? "" : "|") + std::string(one);
  const std::string word = text(all);
  const auto* found = std::find_if(words.begin(), words.end(), [&](const char* one) {
    return g_ascii_strcasecmp(one, word.c_str()) == 0;
  });
  if (found == words.end()) refuse(cited(word) + " is none of " + all);
  return static_cast<std::size_t>(std::distance(words.begin(), found));
}

int Stimulation::value(const google::protobuf::EnumDescriptor& names, const std::string& word) {
  const GText upper(g_ascii_strup(word.c_str(), -1));
  if (const auto* found = names.FindValueByName(upper.get())) return found->number();
  std::string all;
  for (int i = 0; i < names.value_count(); ++i) all += ' ' + names.value(i)->name();
  refuse(cited(word) + " is none of" + all);
  return names.value(0)->number();
}

std::vector<std::string> Stimulation::rest() { return std::exchange(words_, {}); }

std::optional<std::string> Stimulation::named(const std::string& key) {
  const auto found = std::find_if(words_.begin(), words_.end(), [&](const std::string& word) {
    return word.starts_with(key + '=');
  });
  if (found == words_.end()) return std::nullopt;
  std::string value = found->substr(key.size() + 1);
  words_.erase(found);
  return value;
}

void Stimulation::mustBeForAll() {
  if (!only_) return;
  refuse("this happens to the device, not to one application: leave \"" + appName(*only_) +
         "\" out");
}

void Stimulation::refuse(const std::string& trouble) {
  if (trouble_.empty()) trouble_ = trouble;
}

bool Stimulation::understood() {
  if (hasMore()) refuse("what is " + cited(words_.front()) + "?");
  return trouble_.empty();
}

std::vector<AppNumber> Stimulation::targets() const {
  std::vector<AppNumber> numbers;
  for (const auto& [number, application] : device_.applications()) {
    if (isFor(number)) numbers.push_back(number);
  }
  return numbers;
}

void Stimulation::send(const zeph::ZephMsg& message) {
  const std::vector<AppNumber> numbers = targets();
  for (const AppNumber number : numbers) device_.send(number, message);
  if (numbers.empty()) tellNobodyHears();
}

}  // namespace morvik::devkit
