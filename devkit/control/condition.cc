// Paths along the view.
#include "control/condition.h"

#include <charconv>

#include <nlohmann/json.hpp>

#include "device/nearest.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

std::string expanded(const std::string& name) {
  for (const ShortName& one : shortNames()) {
    if (name == one.name) return one.path;
  }
  return name;
}

const Json* memberOf(const Json& value, const std::string& word) {
  if (value.is_object()) {
    const auto found = value.find(word);
    return found != value.end() ? &*found : nullptr;
  }
  std::size_t index = 0;
  const auto read = std::from_chars(word.data(), word.data() + word.size(), index);
  const bool isIndex = !word.empty() && read.ptr == word.data() + word.size();
  return value.is_array() && isIndex && index < value.size() ? &value[index] : nullptr;
}

std::string firstWord(const std::string& path) { return path.substr(0, path.find('.')); }

std::string inQuotesIfBlank(const std::string& value) {
  return value.empty() ? "nothing" : cited(value);
}

}  // namespace

const std::vector<ShortName>& shortNames() {
  static const std::vector<ShortName> kNames = {
      {"led", "led.color", "the colour that was asked for last"},
      {"left", "ears.left", "where the left ear stopped last, 0 to 16"},
      {"right", "ears.right", "the same of the right one"},
      {"player", "player.mode", "stopped, playing or paused"},
      {"sound", "player.url", "what the player plays"},
      {"speech", "speech.text", "what was said last"},
      {"grammar", "listening.grammar", "what was listened for last"},
      {"dock", "dock.moving", "LEFT, RIGHT, UP, DOWN or STOP"},
      {"apps", "applications", "how many applications are connected"},
      {"interactive", "applications.0.interactiveId", "is there in interactive mode"},
      {"busy", "work", "how many things go on"},
  };
  return kNames;
}

std::optional<Condition> conditionIn(const std::string& text) {
  const std::size_t equals = text.find('=');
  Condition condition;
  condition.name = text.substr(0, equals);
  if (equals != std::string::npos) condition.value = text.substr(equals + 1);
  if (condition.value && condition.name.ends_with('!')) {
    condition.equal = false;
    condition.name.pop_back();
  }
  condition.path = expanded(condition.name);
  return condition.name.empty() ? std::nullopt : std::optional(condition);
}

std::string valueAt(const Json& view, const std::string& path) {
  const Json* value = &view;
  for (std::size_t begin = 0; value != nullptr && begin <= path.size();) {
    const std::size_t dot = std::min(path.find('.', begin), path.size());
    value = memberOf(*value, path.substr(begin, dot - begin));
    begin = dot + 1;
  }
  if (value == nullptr || value->is_null()) return "";
  if (value->is_string()) return value->get<std::string>();
  return value->is_array() ? std::to_string(value->size()) : textOf(*value);
}

bool holds(const Condition& condition, const Json& view) {
  const std::string now = valueAt(view, condition.path);
  if (!condition.value) return !now.empty() && now != "false" && now != "0";
  return (now == *condition.value) == condition.equal;
}

std::string unmet(const Condition& condition, const Json& view) {
  const std::string now = inQuotesIfBlank(valueAt(view, condition.path));
  if (!condition.value) return condition.name + " is " + now;
  return condition.name + " is " + (condition.equal ? now + ", not " : "still ") +
         inQuotesIfBlank(*condition.value);
}

std::optional<std::string> strangeName(const Condition& condition, const Json& view) {
  const std::string first = firstWord(condition.path);
  if (!view.is_object() || view.contains(first)) return std::nullopt;
  std::vector<std::string> names;
  for (const ShortName& one : shortNames()) names.emplace_back(one.name);
  for (const auto& [name, value] : view.items()) names.push_back(name);
  const auto near = nearest(first, names);
  return "the device has no " + cited(first) +
         (near ? ": perhaps " + *near : "; it has " + listed(names));
}

}  // namespace morvik::devkit
