// Processes that this program starts or inherits: their start, their end with its status, and
// signals that never reach anybody else.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "device/when-readable.h"
#include "run/file-descriptor.h"

namespace morvik::devkit {

/// From now on processes whose parent ends become children of this one, so that their ends are
/// seen. False where the system cannot do that.
bool becomeReaper();

/// What a process is started from.
struct CommandLine {
  std::vector<std::string> arguments;    ///< the program's path first; it is not searched for
  std::vector<std::string> environment;  ///< further variables, as in "NAME=value"
  int input = -1;
  int output = -1;
  int errors = -1;
};

struct Spawned {
  pid_t pid = 0;  ///< 0 when nothing was started
  int error = 0;  ///< then why, as in errno
};

/// Starts a program as the first of a process group of its own, which the keys of a terminal do not
/// reach, with all signals as a fresh program expects them.
Spawned spawn(const CommandLine& command);

/// A process that is a child of this one, or becomes one before long. Its number may be used again
/// once it is gone; a Process never means anybody else.
class Process {
 public:
  /// Called from the thread-default main context when it has ended.
  using Ended = std::function<void()>;

  Process(pid_t pid, Ended ended);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  bool hasEnded() const;
  /// Waits for its end, at most so long; whether it has ended.
  bool waitForEnd(int milliseconds) const;

  /// What is left of an ended process goes. Gives its status as waitpid does; nothing when it has
  /// not ended, is no child, or its status has been given to its parent.
  std::optional<int> reap() const;

  /// False when it is gone.
  bool send(int signal) const;

 private:
  pid_t pid_;
  FileDescriptor handle_;
  GSourceAttached source_;
};

}  // namespace morvik::devkit
