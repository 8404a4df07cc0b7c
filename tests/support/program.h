// Programs as their users run them: with a line to say something, and both outputs together.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/temporary-folder.h"
#include "support/waiting.h"

namespace morvik::test {

class Program {
 public:
  /// The path of the program, and its arguments.
  explicit Program(const std::vector<std::string>& command);
  /// Ends it by force when it is still there.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// What it has said, once that holds the text; throws when it does not in time.
  std::string waitFor(const std::string& text) const { return output_->await(text); }
  /// What has matched the regular expression in what it has said; throws when nothing does in time.
  std::string waitForPattern(const std::string& pattern) const;

  /// The line that begins `from` bytes into what it has said, without its end; throws when none
  /// comes in time.
  std::string waitForLine(std::size_t from) const;

  /// Writes to its standard input, and ends that.
  void say(const std::string& text);
  void endInput() { input_.close(); }

  void signal(int number) const;

  /// Its exit status, once it has ended; -1 when a signal ended it. Throws when it does not end in
  /// time.
  int waitForEnd();

  [[nodiscard]] std::string output() const { return output_->soFar(); }

 private:
  pid_t pid_ = -1;
  Descriptor input_;
  std::unique_ptr<Stream> output_;
};

struct ProgramResult {
  int status;
  std::string output;
};

/// Runs a program to its end.
ProgramResult run(const std::vector<std::string>& command);

/// morvik-dev's virtual device, with a state of its own that nothing outlives.
class VirtualDevice {
 public:
  /// The path of morvik-dev.
  explicit VirtualDevice(const std::string& program);

  /// Where it listens, as host:port.
  [[nodiscard]] const std::string& address() const { return address_; }

  /// A line for its command input.
  void happens(const std::string& stimulus) { program_.say(stimulus + '\n'); }

  /// Waits until it has shown a line with this pattern in it. Gives what has matched.
  std::string shows(const std::string& pattern) const { return program_.waitForPattern(pattern); }

  [[nodiscard]] std::string transcript() const { return program_.output(); }

 private:
  TemporaryFolder state_;
  Program program_;
  std::string address_;
};

}  // namespace morvik::test
