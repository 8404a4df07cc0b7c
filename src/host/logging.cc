// The log: g_log to syslog and standard error.
#include "host/logging.h"

#include <syslog.h>

#include <cstdio>

namespace morvik {
namespace {

struct LevelRow {
  int level;
  int priority;
  const char* label;
};

// The table stops at WARNING on purpose: an ERROR is written at debug priority, without a label.
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

// A threshold outside 0 to 30 prints nothing; shifting by it would not be defined.
bool reachesStandardError(int level, int debug) {
  return debug >= 0 && debug <= 30 && level <= (1 << debug);
}

}  // namespace

void logHandler(const gchar* /*domain*/, GLogLevelFlags level, const gchar* message,
                gpointer options) {
  const LevelRow row = rowOf(level);
  if (reachesStandardError(level, static_cast<LaunchOptions*>(options)->debug)) {
    std::fprintf(stderr, "%s: %s\n", row.label, message);
  }
  syslog(row.priority, "%s", message);
}

void openLog(LaunchOptions& options) {
  openlog("MorvikVM", LOG_PID | LOG_CONS | LOG_NDELAY, LOG_LOCAL1);
  g_log_set_default_handler(logHandler, &options);
}

}  // namespace morvik
