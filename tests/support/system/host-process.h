// The real morvikvm under test: its standard streams, its log, its end and its children's ends.
#pragma once

#include <sys/types.h>

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/system/app-folder.h"
#include "support/system/log-socket.h"
#include "support/temporary-folder.h"
#include "support/waiting.h"

namespace morvik::test {

struct HostOptions {
  std::vector<std::string> arguments = {};
  std::string programName = "morvikvm";          // what stands at index 0 of the argument vector
  std::vector<std::string> environment = {};     // further variables, as in "NAME=value"
  std::optional<std::string> input = {};         // a file as standard input, not a pipe
  std::optional<unsigned> shortTimersFrom = {};  // shortens timers from this interval upwards
  bool forkFails = false;                        // every fork fails with EAGAIN
  bool keepsOnlyNews = false;        // of the log: what scripts say, and how processes come and go
  bool lowDescriptorsTaken = false;  // every new descriptor is beyond what select can take
};

// How a process ended: by exit with a status, or by a signal.
struct Exit {
  bool bySignal = false;
  int code = 0;
  bool operator==(const Exit&) const = default;
};
inline Exit exited(int status) { return {false, status}; }
inline Exit killedBy(int signal) { return {true, signal}; }
std::ostream& operator<<(std::ostream& stream, const Exit& exit);

class HostProcess {
 public:
  explicit HostProcess(const HostOptions& options);
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;
  // Kills the launcher and every application of it that still lives.
  ~HostProcess();

  [[nodiscard]] pid_t pid() const { return pid_; }

  // Standard input: a launch line with its newline; bytes as they are; its end.
  void line(std::string_view line);
  void write(std::string_view bytes);
  void closeInput() { input_.close(); }

  // Waits for a record with exactly this text, of the process when one is given.
  LogRecord waitForLog(std::string_view text, std::optional<pid_t> from = {}) const;
  LogRecord waitForLog(std::string_view what, const LogMatcher& matches) const;
  // Waits until so many records with this text came, of the process when one is given.
  LogRecord waitForLogTimes(std::string_view text, int times, std::optional<pid_t> from = {}) const;
  [[nodiscard]] std::vector<LogRecord> log() const { return log_.records(); }
  // Waits for a record with this in its text that came after the one that the last such call gave.
  LogRecord waitForNews(std::string_view part);
  // The texts of one process, in order.
  [[nodiscard]] std::vector<std::string> texts(pid_t from) const;

  Stream& output() { return *output_; }
  Stream& errors() { return *errors_; }

  // Waits for the launcher's end.
  Exit waitForExit();
  // Waits for the end of an application that the launcher has left behind.
  static Exit waitForExit(pid_t app);
  // Waits until a process of this host has ended, whoever its parent is.
  static void waitUntilEnded(pid_t process);
  // Whether a process of this host has not ended.
  [[nodiscard]] static bool alive(pid_t process);
  // What /proc tells of a process of this host: the field of that name in its status.
  [[nodiscard]] static std::string statusOf(pid_t process, const std::string& name);
  // Waits until a process has slept a few more times, so that it is in its loop again, or has
  // ended.
  static void waitUntilLooping(pid_t process);
  // Stops the launcher with the empty line and waits for its end; its applications go on.
  void leaveApps();
  // Ends everything, so that the streams come to their ends too.
  void killAll();

  // Everything that is known about the run, to be printed when a test fails.
  std::string transcript();

 private:
  void start(const HostOptions& options);

  TemporaryFolder folder_;
  LogSocket log_;
  std::size_t newsSeen_ = 0;
  pid_t pid_ = -1;
  bool finished_ = false;
  Descriptor input_;
  std::unique_ptr<Stream> output_;
  std::unique_ptr<Stream> errors_;
};

}  // namespace morvik::test
