// Starting programs as children of a test.
#pragma once

#include <sys/types.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "support/waiting.h"

namespace morvik::test {

struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

/// Throws when there is none to be had.
Pipe makePipe();

/// What a program is started with.
struct Start {
  std::string program;                   ///< its path
  std::vector<std::string> arguments;    ///< from index 0 on, which is what it thinks its name is
  std::vector<std::string> environment;  ///< as in "NAME=value"
  std::array<int, 3> streams{0, 1, 2};   ///< what become its standard streams
  /// The last steps before the program, in the new process, where nothing may allocate. They may
  /// move `complaints`, where failures are told, out of their way. Give null, or the name of the
  /// step that failed; errno tells why.
  std::function<const char*(int& complaints)> prepare = {};
};

/// Starts it in a process group of its own. Throws when it cannot be started.
pid_t startProcess(const Start& start);

/// The environment of this process.
std::vector<std::string> ownEnvironment();

}  // namespace morvik::test
