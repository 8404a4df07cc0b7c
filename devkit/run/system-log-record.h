// One record of the system log, from its socket or from a line of its file.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "run/log-line.h"

namespace morvik::devkit {

struct SystemLogRecord {
  std::optional<TimePoint> time;  ///< nothing for a record that came without one
  std::string timeText;           ///< as it stands in the file
  std::string ident;              ///< the program, "MorvikVM"
  pid_t pid = 0;                  ///< 0 when it does not tell
  std::optional<int> priority;    ///< as in syslog.h, without the facility
  std::string text;               ///< its further lines behind newlines

  /// Whether a host of ours wrote it.
  bool isOurs() const { return ident == "MorvikVM"; }
};

/// A record as a program sends it: "<135>Jan  1 12:00:00 name[12]: text". Nothing for what is none.
std::optional<SystemLogRecord> recordOfSocket(std::string_view bytes);

/// A line of a log's file, "Jan  1 12:00:00 host name[12]: text" or with a time in ISO form in
/// front, after a priority or without. Nothing for what is none, such as a further line of the
/// record before. `now` tells the year, where the time is without one.
std::optional<SystemLogRecord> recordOfFile(std::string_view line, TimePoint now);

/// The line that a host wrote. Its time is the record's, or `now`.
LogLine lineOf(const SystemLogRecord& record, TimePoint now);

/// The word for a record's priority, "NOTICE"; empty without one.
std::string priorityInWords(const SystemLogRecord& record);

}  // namespace morvik::devkit
