// A system log in lines for people: which application wrote what, its start and its end.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "run/log-filter.h"
#include "run/log-story.h"
#include "run/system-log-record.h"

namespace morvik::devkit {

class LogView {
 public:
  /// Gets each line to show, further lines of a record among them.
  using Sink = std::function<void(const std::string& line)>;

  LogView(LogFilter filter, Sink sink) : filter_(std::move(filter)), sink_(std::move(sink)) {}

  /// What came on the log's socket at a time.
  void takeDatagram(std::string_view bytes, TimePoint now);
  /// The next line of a log's file.
  void takeFileLine(std::string_view line, TimePoint now);
  /// The file has ended.
  void finishFile();

 private:
  void take(const SystemLogRecord& record, TimePoint now);
  void takeOurs(const SystemLogRecord& record, TimePoint now);
  void showLine(const SystemLogRecord& record, const LogLine& line);
  void showNote(const SystemLogRecord& record, const LogLine& line, const std::string& text);
  void show(const std::string& head, const std::string& text);

  LogFilter filter_;
  Sink sink_;
  LogStory story_;
  std::optional<SystemLogRecord> fileRecord_;  // its further lines may follow
};

}  // namespace morvik::devkit
