// Programs as their users run them: with a line to say something, and both outputs together.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/waiting.h"

namespace morvik::test {

class Program {
 public:
  /// The path of the program, and its arguments.
  explicit Program(const std::vector<std::string>& command);
  /// Tells it to end (SIGTERM), and ends it by force when that does not help in time. It is told so
  /// too when this process dies.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// What it has said, once that holds the text; throws when it does not in time.
  std::string waitFor(const std::string& text) const { return output_->await(text); }

  /// The line that begins `from` bytes into what it has said, without its end; throws when none
  /// comes in time.
  std::string waitForLine(std::size_t from) const;

  /// Waits until all that it has said is as asked; false when that does not come in time.
  [[nodiscard]] bool saysSoon(const std::function<bool(const std::string&)>& asked) const {
    return output_->awaitThat(asked);
  }

  /// Writes to its standard input, and ends that.
  void say(const std::string& text);
  void endInput() { input_.close(); }

  void signal(int number) const;
  [[nodiscard]] pid_t pid() const { return pid_; }

  /// Its exit status, once it has ended; -1 when a signal ended it. Throws when it does not end in
  /// time.
  int waitForEnd();

  [[nodiscard]] std::string output() const { return output_->soFar(); }

 private:
  void end();

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

}  // namespace morvik::test
