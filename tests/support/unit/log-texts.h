// The log as tests compare it: each line with its level's name in front.
#pragma once

#include <glib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/unit/captured-log.h"

namespace morvik::test {

inline const char* levelName(int level) {
  switch (level & G_LOG_LEVEL_MASK) {
    case G_LOG_LEVEL_ERROR:
      return "ERROR";
    case G_LOG_LEVEL_CRITICAL:
      return "CRITICAL";
    case G_LOG_LEVEL_WARNING:
      return "WARNING";
    case G_LOG_LEVEL_MESSAGE:
      return "MESSAGE";
    case G_LOG_LEVEL_INFO:
      return "INFO";
    default:
      return "DEBUG";
  }
}

/// The lines in order, as in "WARNING NO CORRELATION FOUND".
inline std::vector<std::string> levelled(const std::vector<LogLine>& lines) {
  std::vector<std::string> texts;
  for (const LogLine& line : lines) texts.push_back(levelName(line.level) + (" " + line.text));
  return texts;
}

/// A pointer as the log's %p writes it.
inline std::string pointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

/// From here on the log goes to standard error, where a test that ends its process can look.
inline void printLog() {
  g_log_set_default_handler(
      [](const gchar* /*domain*/, GLogLevelFlags level, const gchar* text, gpointer /*unused*/) {
        g_printerr("%s %s\n", levelName(level), text);
      },
      nullptr);
}

}  // namespace morvik::test
