// One read of the host takes 4094 characters, the newline among them; a blank ends a field.
#include "run/launch-line.h"

#include <algorithm>
#include <string_view>

namespace morvik::devkit {
namespace {

constexpr std::size_t kLongestLine = 4093;

bool breaksLine(char c) { return c == '\n' || c == '\0'; }

bool holdsBlank(const std::string& text) { return text.find(' ') != std::string::npos; }

}  // namespace

std::string LaunchLine::text() const {
  if (type.empty() && instance.empty()) return app;
  if (instance.empty()) return app + ' ' + type;
  return app + ' ' + type + ' ' + instance;
}

std::optional<std::string> troubleWith(const LaunchLine& line) {
  if (line.app.empty()) return "it has no name";
  if (holdsBlank(line.app)) return "its name \"" + line.app + "\" holds a blank";
  if (holdsBlank(line.type)) return "its launch type \"" + line.type + "\" holds a blank";
  return troubleWithLine(line.text());
}

std::optional<std::string> troubleWithLine(const std::string& line) {
  if (line.empty()) return "the line is empty, which ends a launcher";
  if (line.front() == ' ') return "the line begins with a blank, so it names nothing";
  if (std::ranges::any_of(line, breaksLine)) return "the line holds a line end or a zero byte";
  if (line.size() > kLongestLine) {
    return "the line is " + std::to_string(line.size()) + " characters long, above " +
           std::to_string(kLongestLine);
  }
  return std::nullopt;
}

std::string appOf(const std::string& line) { return line.substr(0, line.find(' ')); }

}  // namespace morvik::devkit
