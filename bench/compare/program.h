// Programs that the benchmark starts, and what they say on a pipe.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "support/waiting.h"

namespace morvik::bench {

/// Waits where time itself is what is wanted, or where nothing announces what is waited for.
void pass(double seconds);

/// Read by nobody but whoever awaits a text, and without a thread in between: the time of a line's
/// arrival counts.
class Output {
 public:
  explicit Output(test::Descriptor source) : source_(std::move(source)) {}

  /// Waits for the text in what has not been awaited yet, and drops all up to its end. Throws
  /// std::runtime_error with what came when the text does not.
  void await(std::string_view text);

 private:
  test::Descriptor source_;
  std::string unread_;
};

/// Which standard stream of a program is read.
enum class Said { kOutput, kErrors };

struct Command {
  std::vector<std::string> words;  ///< the program's path first
  Said said = Said::kOutput;
  bool input = false;                             ///< its standard input is written to
  std::vector<std::string> environment = {};      ///< further variables, as in "NAME=value"
  std::function<const char*(int&)> prepare = {};  ///< as in test::Start
};

/// A program from its start until it is killed by the destructor.
class Program {
 public:
  /// Throws when it cannot be started.
  explicit Program(const Command& command);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program();

  [[nodiscard]] pid_t pid() const { return pid_; }
  Output& output() { return output_; }
  void write(std::string_view bytes);

 private:
  Program(const Command& command, struct Pipes pipes);

  pid_t pid_;
  test::Descriptor input_;
  Output output_;
};

}  // namespace morvik::bench
