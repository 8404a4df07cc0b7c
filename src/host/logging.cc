// The log: g_log to syslog and standard error.
#include "host/logging.h"

#include <syslog.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/system-log.h"

namespace morvik {
namespace {

struct LevelRow {
  int level;
  int priority;
  const char* label;
};

// The table stops at WARNING: an ERROR is written at debug priority and without a label. A filter
// on the system log that drops debug therefore drops the last words of a process; standard error
// has them behind a bare colon.
constexpr LevelRow kLevels[] = {
    {G_LOG_LEVEL_DEBUG, LOG_DEBUG, "DEBUG"},
    {G_LOG_LEVEL_INFO, LOG_INFO, "INFO"},
    {G_LOG_LEVEL_MESSAGE, LOG_NOTICE, "MESSAGE"},
    {G_LOG_LEVEL_WARNING, LOG_WARNING, "WARNING"},
};
constexpr LevelRow kOtherLevels = {0, LOG_DEBUG, ""};

LevelRow rowOf(int level) {
  for (const LevelRow& row : kLevels) {
    if (row.level == level) return row;
  }
  return kOtherLevels;
}

// A record is one datagram, and one that is larger than the socket takes goes to the console, byte
// by byte on a serial line: the application stands still for seconds. This is well below, also with
// the record's head and what is said of the rest.
constexpr std::size_t kMaxRecord = 131072;

// What stands behind a text that was cut, as in "... (1000 bytes left out)".
constexpr const char* kCutRecord = "... (%zu bytes left out)";
constexpr std::size_t kCutRoom = 64;

// What GLib hands over when it found no memory for the text.
constexpr const char* kNoText = "out of memory: no text for this message";

// The launcher's, from openLog on.
LaunchOptions defaultSettings;
LaunchOptions* settings = &defaultSettings;

// The most of a text that fits into a record, with its last letter whole: in UTF-8 a byte of the
// form 10xxxxxx belongs to the letter before, which has three of them at most. Other texts are cut
// there too.
std::size_t lengthOfCut(const char* text) {
  constexpr unsigned kMask = 0xC0;
  constexpr unsigned kFurtherByte = 0x80;
  std::size_t length = kMaxRecord;
  while (length > kMaxRecord - 3 &&
         (static_cast<unsigned char>(text[length]) & kMask) == kFurtherByte)
    --length;
  return length;
}

void sendRecord(int priority, const char* message) {
  const std::string_view text(message);
  if (text.size() <= kMaxRecord) return writeRecord(priority, text);
  const std::size_t kept = lengthOfCut(message);
  std::array<char, kCutRoom> rest{};
  std::snprintf(rest.data(), rest.size(), kCutRecord, text.size() - kept);
  writeRecord(priority, text.substr(0, kept), rest.data());
}

// A threshold outside 0 to 30 prints nothing; shifting by it would not be defined.
bool reachesStandardError(int level, int debug) {
  return debug >= 0 && debug <= 30 && level <= (1 << debug);
}

bool endsProcess(int level) { return (level & (G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL)) != 0; }

}  // namespace

void logHandler(const gchar* /*domain*/, GLogLevelFlags level, const gchar* message,
                gpointer options) {
  const LevelRow row = rowOf(level);
  if (message == nullptr) message = kNoText;
  if (reachesStandardError(level, static_cast<LaunchOptions*>(options)->debug)) {
    sendHeldRecords();  // what is behind a standard error that nobody reads must not wait
    std::fprintf(stderr, "%s: %s\n", row.label, message);
  }
  sendRecord(row.priority, message);
  if (endsProcess(level)) sendHeldRecords();
}

// Where even the log needs memory and finds none, it comes here again: then what standard error got
// is all that there is.
void endFatally(const char* text) {
  static volatile std::sig_atomic_t ending = 0;
  if (ending != 0) G_BREAKPOINT();
  ending = 1;
  constexpr auto kFatal = static_cast<GLogLevelFlags>(G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL);
  logHandler(G_LOG_DOMAIN, kFatal, text, settings);
  G_BREAKPOINT();
  std::abort();
}

void openLog(LaunchOptions& options, const char* path) {
  settings = &options;
  openSystemLog(path);
  g_log_set_default_handler(logHandler, &options);
}

}  // namespace morvik
