// From the host's records to lines: level, kind, and the text as text.
#include "run/log-line.h"

#include <glib.h>
#include <syslog.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "run/log-text.h"

namespace morvik::devkit {
namespace {

constexpr std::string_view kScriptMark = "JSLOG: ";
constexpr std::string_view kSeparator = ": ";

struct LevelName {
  LogLevel level;
  const char* word;
};
constexpr LevelName kLevels[] = {
    {LogLevel::kUnknown, ""},        {LogLevel::kDebug, "DEBUG"},     {LogLevel::kInfo, "INFO"},
    {LogLevel::kMessage, "MESSAGE"}, {LogLevel::kWarning, "WARNING"}, {LogLevel::kFatal, "FATAL"},
    {LogLevel::kForeign, "OUTPUT"},
};

struct Label {
  std::string_view text;
  LogLevel level;
};
// What the host puts in front of a text on standard error. A message that ends it has no word.
constexpr Label kLabels[] = {{"DEBUG: ", LogLevel::kDebug},
                             {"INFO: ", LogLevel::kInfo},
                             {"MESSAGE: ", LogLevel::kMessage},
                             {"WARNING: ", LogLevel::kWarning},
                             {kSeparator, LogLevel::kFatal}};

struct Beginning {
  std::string_view text;
  LogLevel level;
};

// In the system log the messages that end an application look like debug lines; files of it mostly
// do not tell a level at all. These are known by how they begin.
constexpr Beginning kKnown[] = {
    {"Failed to receive bytes", LogLevel::kFatal},
    {"Failed to select socket", LogLevel::kFatal},
    {"send failed: ", LogLevel::kFatal},
    {"script engine out of memory: ", LogLevel::kFatal},
    {"script engine failed: ", LogLevel::kFatal},
    {"descriptor.xml: access element ", LogLevel::kFatal},
    {"ASR: AsrCallback: the server sent a recognition result without", LogLevel::kFatal},
    {"/!\\ AUTOKILL, ", LogLevel::kWarning},
    {"interactive mode stopped, autokill", LogLevel::kWarning},
    {"no params loaded: ", LogLevel::kWarning},
    {"NO CORRELATION FOUND", LogLevel::kWarning},
    {"connect failed on ", LogLevel::kWarning},
    {"connection refused", LogLevel::kWarning},
    {"access denied: ", LogLevel::kWarning},
    {"curl error code: ", LogLevel::kWarning},
    {"DEPRECATED ", LogLevel::kWarning},
    {"JSLOG: ", LogLevel::kMessage},
    {"MorvikVM ", LogLevel::kMessage},
    {"params: ", LogLevel::kMessage},
    {"nbChild ", LogLevel::kMessage},
    {"decriptor loaded", LogLevel::kMessage},
    {"EXIT", LogLevel::kDebug},
    {"Sending MSG\n", LogLevel::kDebug},
    {"Received MSG\n", LogLevel::kDebug},
    {"message received", LogLevel::kDebug},
};

// What tells an author nothing: answers that a call without a function gets, a config.bin that
// most applications do without, and the launcher's counting.
constexpr std::string_view kNoise[] = {
    "NO CORRELATION FOUND",
    "no params loaded: No such file or directory",
    "MorvikVM started...",
    "MorvikVM buffer:",
    "params: ",
    "nbChild ",
    "setCmdLine ",
    "APP NAME ",
    "LAUNCH_TYPE ",
    "INSTANCE_NAME ",
    "end process: ",
    "decriptor loaded",
};

bool isDump(std::string_view text) {
  return text.starts_with("Sending MSG\n") || text.starts_with("Received MSG\n");
}

bool isNoise(std::string_view text) {
  return std::ranges::any_of(
      kNoise, [text](std::string_view beginning) { return text.starts_with(beginning); });
}

LogLevel levelByText(std::string_view text, LogLevel otherwise) {
  const auto* found = std::ranges::find_if(
      kKnown, [text](const Beginning& known) { return text.starts_with(known.text); });
  return found != std::end(kKnown) ? found->level : otherwise;
}

LogLevel levelOfPriority(int priority, std::string_view text) {
  switch (priority) {
    case LOG_INFO:
      return LogLevel::kInfo;
    case LOG_NOTICE:
      return LogLevel::kMessage;
    case LOG_WARNING:
      return LogLevel::kWarning;
    case LOG_DEBUG:
      return levelByText(text, LogLevel::kDebug) == LogLevel::kFatal ? LogLevel::kFatal
                                                                     : LogLevel::kDebug;
    default:
      return LogLevel::kFatal;
  }
}

const Label* labelOf(std::string_view record) {
  const auto* found = std::ranges::find_if(
      kLabels, [record](const Label& label) { return record.starts_with(label.text); });
  return found != std::end(kLabels) ? found : nullptr;
}

LogLine hostLine(LogLevel level, std::string_view text) {
  LogLine line;
  line.level = level;
  const bool mayBeScript = level == LogLevel::kMessage || level == LogLevel::kUnknown;
  if (mayBeScript && text.starts_with(kScriptMark)) {
    line.kind = LineKind::kScript;
    line.level = LogLevel::kMessage;
    line.text = harmless(fromScriptBytes(text.substr(kScriptMark.size())));
  } else {
    line.kind = isNoise(text) ? LineKind::kNoise : LineKind::kHost;
    line.text = harmless(isDump(text) ? withoutEscapes(text) : std::string(text));
  }
  return line;
}

}  // namespace

const char* wordOf(LogLevel level) {
  return std::ranges::find(kLevels, level, &LevelName::level)->word;
}

std::optional<LogLevel> levelOf(std::string_view word) {
  const std::string text(word);
  const auto* found = std::ranges::find_if(kLevels, [&text](const LevelName& row) {
    return g_ascii_strcasecmp(row.word, text.c_str()) == 0;
  });
  if (text.empty() || found == std::end(kLevels)) return std::nullopt;
  return found->level;
}

bool beginsLikeHostRecord(std::string_view record) { return labelOf(record) != nullptr; }

LogLine lineOfStandardError(std::string_view record) {
  const Label* label = labelOf(record);
  if (label == nullptr) return hostLine(LogLevel::kForeign, record);
  return hostLine(label->level, record.substr(label->text.size()));
}

LogLine lineOfStandardOutput(std::string_view text) {
  LogLine line;
  line.kind = LineKind::kOutput;
  line.text = harmless(std::string(text));
  return line;
}

LogLine lineOfSystemLog(std::string_view text, std::optional<int> priority) {
  return hostLine(
      priority ? levelOfPriority(*priority, text) : levelByText(text, LogLevel::kUnknown), text);
}

}  // namespace morvik::devkit
