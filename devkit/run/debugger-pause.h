// What an application's log tells of the pauses that a debugger makes.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "run/log-line.h"

namespace morvik::devkit {

class DebuggerPause {
 public:
  /// Hears each line. Gives how long a pause was when that is over.
  std::optional<std::chrono::system_clock::duration> take(const LogLine& line);

  /// Where it is paused, "at main.js:12"; empty when it is not.
  const std::string& place() const { return place_; }

 private:
  std::string place_;
  TimePoint since_;
};

}  // namespace morvik::devkit
