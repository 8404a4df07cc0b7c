// A terminal that gives each key at once, for as long as a program wants keys.
#pragma once

#include <termios.h>

namespace morvik::devkit {

/// Keys come without the line's end and are not shown; Ctrl-C and Ctrl-Z work as ever. What the
/// terminal was before it is again at the end of this, while the process is stopped, and when a
/// signal ends the process that nobody expected. One at a time in a process.
class KeyMode {
 public:
  /// Does nothing for a descriptor that is no terminal. A process in the background changes nothing
  /// before it comes to the front.
  explicit KeyMode(int terminal);
  ~KeyMode();
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

  /// It is a terminal, and keys can be read from it.
  bool isOn() const { return on_; }

 private:
  bool on_ = false;
};

}  // namespace morvik::devkit
