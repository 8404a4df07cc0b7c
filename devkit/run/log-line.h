// A line of an application's log as a person reads it: when, who, how serious, and what it says.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace morvik::devkit {

using TimePoint = std::chrono::system_clock::time_point;

/// How serious a line is, least first.
enum class LogLevel {
  kUnknown,  ///< a file of the system log seldom tells
  kDebug,
  kInfo,
  kMessage,
  kForeign,  ///< not through the log: standard output, or what a library says on standard error
  kWarning,
  kFatal,  ///< the last words of an application
};

enum class LineKind {
  kScript,  ///< what the script gave to `log`
  kHost,    ///< what MorvikVM says
  kNoise,   ///< what MorvikVM says and no author needs
  kOutput,  ///< standard output
};

struct LogLine {
  TimePoint time;
  std::string app;  ///< the application's name; empty when it is not known, as for a launcher
  pid_t pid = 0;    ///< the process that wrote it; 0 when that is not known
  LogLevel level = LogLevel::kForeign;
  LineKind kind = LineKind::kHost;
  /// UTF-8, without control characters but the newlines in front of its further lines. A script's
  /// line stands without the word that the host puts in front of it.
  std::string text;
};

/// "WARNING", the word that stands for a level; "" for kUnknown.
const char* wordOf(LogLevel level);
/// The level of a word in any case, "warning"; nothing for a word that names none.
std::optional<LogLevel> levelOf(std::string_view word);

/// A record that a host wrote on its standard error, without its line end: "WARNING: text". Time,
/// process and application are the caller's to set.
LogLine lineOfStandardError(std::string_view record);
/// A line that a host wrote on its standard output.
LogLine lineOfStandardOutput(std::string_view text);
/// A text that a host sent to the system log, at a priority as in syslog.h when that is known.
LogLine lineOfSystemLog(std::string_view text, std::optional<int> priority);

/// Whether a record on standard error begins as the host's own do, with the word for a level.
bool beginsLikeHostRecord(std::string_view record);

}  // namespace morvik::devkit
