// The system log of one program under test: a socket that the program finds as /dev/log, in a mount
// namespace of its own, so that tests run side by side and no real log hears of them.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/waiting.h"

namespace morvik::test {

// One line of the log as the program sent it: "<PRI>date MorvikVM[pid]: text".
struct LogRecord {
  int facility = 0;  // as in syslog.h, so LOG_LOCAL1
  int priority = 0;  // LOG_DEBUG, LOG_NOTICE, ...
  std::string ident;
  pid_t pid = 0;
  std::string text;
  Clock::time_point arrival;
};

using LogMatcher = std::function<bool(const LogRecord&)>;

class LogSocket {
 public:
  // Makes the socket and all that the namespace needs below `folder`, which must outlive it. With
  // `onlyNews` it keeps what scripts say, and how processes come and go, and forgets the rest.
  explicit LogSocket(const std::filesystem::path& folder, bool onlyNews = false);

  // For the process that becomes the program, between fork and exec: enters a mount namespace
  // where /dev holds the usual nodes and this socket as `log`. Gives null, or the name of the step
  // that failed; errno tells why. Allocates nothing.
  const char* enterNamespace() const;

  // The first record that matches, of those that came already or come in time; throws with `what`
  // otherwise.
  LogRecord await(std::string_view what, const LogMatcher& matches) const;

  // The same of the records from `seen` on, which then counts those that were looked at.
  LogRecord awaitFrom(std::size_t& seen, std::string_view what, const LogMatcher& matches) const;

  // Every record that was sent before this call.
  std::vector<LogRecord> records() const;

 private:
  void take(std::string_view datagram);
  void prepareNodes() const;

  std::filesystem::path folder_;
  std::filesystem::path devices_;
  std::vector<std::pair<std::string, std::string>> nodes_;  // from the real /dev, to ours
  mutable int marks_ = 0;
  bool onlyNews_;
  Growing<std::vector<LogRecord>> records_;
  std::unique_ptr<BackgroundReader> reader_;
};

// The whole log for a person to read.
std::string describe(const std::vector<LogRecord>& records);

}  // namespace morvik::test
