// What the code under test writes to the log.
#pragma once

#include <glib.h>

#include <algorithm>
#include <string>
#include <vector>

namespace morvik::test {

struct LogLine {
  int level;  ///< the GLib level
  std::string text;
  bool operator==(const LogLine&) const = default;
};

/// Takes over GLib's default log handler for as long as it lives.
class CapturedLog {
 public:
  CapturedLog() { g_log_set_default_handler(take, this); }
  ~CapturedLog() { g_log_set_default_handler(g_log_default_handler, nullptr); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  [[nodiscard]] const std::vector<LogLine>& lines() const { return lines_; }
  void clear() { lines_.clear(); }

  /// The texts alone, in order.
  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const LogLine& line : lines_) texts.push_back(line.text);
    return texts;
  }

  /// The lines of one level, in order.
  [[nodiscard]] std::vector<std::string> texts(int level) const {
    std::vector<std::string> texts;
    for (const LogLine& line : lines_) {
      if (line.level == level) texts.push_back(line.text);
    }
    return texts;
  }

  [[nodiscard]] bool has(int level, const std::string& text) const {
    return std::find(lines_.begin(), lines_.end(), LogLine{level, text}) != lines_.end();
  }

 private:
  // A fatal message must still be seen by a test that expects the process to end.
  static void take(const gchar* /*domain*/, GLogLevelFlags level, const gchar* message,
                   gpointer self) {
    const int plain = level & G_LOG_LEVEL_MASK;
    if (plain == G_LOG_LEVEL_ERROR) g_printerr("fatal: %s\n", message);
    static_cast<CapturedLog*>(self)->lines_.push_back({plain, message});
  }

  std::vector<LogLine> lines_;
};

}  // namespace morvik::test
