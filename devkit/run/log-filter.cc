// Applications, level, text.
#include "run/log-filter.h"

#include <algorithm>

namespace morvik::devkit {

std::optional<std::string> LogFilter::setLevel(const std::string& word) {
  const auto level = levelOf(word);
  if (!level) return "there is no level " + word + ": debug, info, message, warning, fatal";
  level_ = *level;
  return std::nullopt;
}

std::optional<std::string> LogFilter::setPattern(const std::string& pattern) {
  GErrorOwned error;
  pattern_.reset(
      g_regex_new(pattern.c_str(), GRegexCompileFlags{}, GRegexMatchFlags{}, error.out()));
  if (!pattern_) return std::string(error.text());
  return std::nullopt;
}

bool LogFilter::wantsApp(const std::string& app) const {
  return apps_.empty() || std::ranges::find(apps_, app) != apps_.end();
}

bool LogFilter::wants(const LogLine& line) const {
  if (!wantsApp(line.app) || line.level < level_) return false;
  return !pattern_ ||
         g_regex_match(pattern_.get(), line.text.c_str(), GRegexMatchFlags{}, nullptr) != FALSE;
}

}  // namespace morvik::devkit
