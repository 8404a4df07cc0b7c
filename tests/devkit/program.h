// A program under test, run as its users run it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "loop.h"

namespace morvik::devkit::testing {

class Program {
 public:
  // What it says on both outputs is kept together.
  Program(Loop& loop, std::vector<std::string> command);
  // Ends it by force when it is still there.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // What it has said, once that holds the text. A failure of the test when it does not in time.
  std::string waitFor(const std::string& text);

  // Writes to its standard input.
  void say(const std::string& text);
  // Its standard input ends.
  void endInput();

  void signal(int number) { g_subprocess_send_signal(process_.get(), number); }

  // Its exit status, once it has ended; -1 when a signal ended it, or it does not end in time.
  int waitForEnd();

  const std::string& output() const { return output_; }

 private:
  static void onRead(GObject* stream, GAsyncResult* result, void* program);
  void read();

  Loop& loop_;
  GOwned<GSubprocess> process_;
  std::array<char, 4096> buffer_{};
  std::string output_;
  bool outputEnded_ = false;
};

struct Outcome {
  int status;
  std::string output;
};

// Runs a program to its end.
Outcome run(std::vector<std::string> command);

}  // namespace morvik::devkit::testing
