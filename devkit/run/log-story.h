// Which application wrote what, and which ended why, told from a log that several of them write.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

#include "run/ends.h"
#include "run/evidence.h"

namespace morvik::devkit {

/// Hears all lines of a log in order, of launchers and of applications.
class LogStory {
 public:
  struct Told {
    bool started = false;    ///< the line is the first of a fresh application
    std::optional<End> end;  ///< the line tells the end of an application, its own or another's
  };

  /// Sets the name of the application that wrote the line, which the lines of its start tell.
  Told take(LogLine& line);

 private:
  struct App {
    EvidenceCollector collector;
    bool runs = false;  // has said so for the second time
  };
  // A log without launchers' lines does not tell every end.
  static constexpr std::size_t kMostApps = 100;

  bool begin(const LogLine& line);
  void forgetOldest();
  std::optional<End> endOf(pid_t pid, const LogLine& line);

  std::map<pid_t, App> apps_;
  std::string folder_;  // where the last launcher looks for applications
};

}  // namespace morvik::devkit
