// Which lines of a log are wanted.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/owned.h"
#include "run/log-line.h"

namespace morvik::devkit {

class LogFilter {
 public:
  /// Only these applications; none means all.
  void setApps(std::vector<std::string> apps) { apps_ = std::move(apps); }
  /// Only this level and what is more serious. Gives what is wrong with the word for it.
  [[nodiscard]] std::optional<std::string> setLevel(const std::string& word);
  /// Only lines that hold a match of the regular expression. Gives what is wrong with it.
  [[nodiscard]] std::optional<std::string> setPattern(const std::string& pattern);

  bool wantsApp(const std::string& app) const;
  bool wants(const LogLine& line) const;

 private:
  std::vector<std::string> apps_;
  LogLevel level_ = LogLevel::kUnknown;
  std::unique_ptr<GRegex, Release<g_regex_unref>> pattern_;
};

}  // namespace morvik::devkit
