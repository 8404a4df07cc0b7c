// Terminal settings, and the signals at which they change.
#include "terminal/key-mode.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace morvik::devkit {
namespace {

// What signal handlers need; they find nothing else. Written only while no handler is installed.
int terminal = -1;
termios before;
termios during;

// Whoever ends the process by one of these leaves no chance to do anything in peace.
constexpr std::array<int, 6> kFatal = {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};

// Only who is in front may set the terminal: the system would stop any other.
bool isInFront() { return tcgetpgrp(terminal) == getpgrp(); }

void restore() {
  if (isInFront()) tcsetattr(terminal, TCSADRAIN, &before);
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

// The signal again, with what the system does about it.
void raiseForSystem(int signal) {
  handle(signal, SIG_DFL);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  raise(signal);
  sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

void onFatal(int signal) {
  restore();
  raiseForSystem(signal);
}

// Goes on behind the raise when the process is continued.
void onStop(int signal) {
  const int kept = errno;
  restore();
  raiseForSystem(signal);
  handle(signal, onStop);
  errno = kept;
}

// Also after a stop that no handler sees. A process that was continued in the background gets this
// signal once more when it comes to the front.
void onContinue(int /*signal*/) {
  const int kept = errno;
  if (isInFront()) tcsetattr(terminal, TCSADRAIN, &during);
  errno = kept;
}

void handleAll(void (*fatal)(int), void (*stop)(int), void (*resume)(int)) {
  for (const int signal : kFatal) handle(signal, fatal);
  handle(SIGTSTP, stop);
  handle(SIGCONT, resume);
}

}  // namespace

KeyMode::KeyMode(int descriptor) {
  on_ = isatty(descriptor) == 1 && tcgetattr(descriptor, &before) == 0;
  if (!on_) return;
  terminal = descriptor;
  during = before;
  during.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  during.c_cc[VMIN] = 1;
  during.c_cc[VTIME] = 0;
  handleAll(onFatal, onStop, onContinue);
  if (isInFront()) tcsetattr(terminal, TCSADRAIN, &during);
}

KeyMode::~KeyMode() {
  if (!on_) return;
  handleAll(SIG_DFL, SIG_DFL, SIG_DFL);
  restore();
}

}  // namespace morvik::devkit
