// A program on a terminal of its own, with somebody at the keys.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "device/when-readable.h"
#include "loop.h"

namespace morvik::test {

class PtyProgram {
 public:
  PtyProgram(Loop& loop, const std::vector<std::string>& command, int columns = 100);
  /// Ends it by force when it is still there.
  ~PtyProgram();
  PtyProgram(const PtyProgram&) = delete;
  PtyProgram& operator=(const PtyProgram&) = delete;

  pid_t pid() const { return pid_; }

  /// What the terminal got, once the text has come after everything that was waited for before. A
  /// failure of the test when it does not in time.
  std::string waitFor(const std::string& text);
  /// Keys, as bytes.
  void press(const std::string& keys);
  /// The terminal's window is closed.
  void closeTerminal();
  /// Keys reach the program one by one, and are not shown.
  bool givesKeysAtOnce() const;

  /// Its exit status, once it has ended; -1 when a signal ended it.
  int waitForEnd();
  const std::string& output() const { return output_; }

 private:
  bool take();

  Loop& loop_;
  int terminal_ = -1;
  pid_t pid_ = -1;
  devkit::GSourceAttached source_;
  std::string output_;
  std::size_t heard_ = 0;
  bool closed_ = false;
};

}  // namespace morvik::test
