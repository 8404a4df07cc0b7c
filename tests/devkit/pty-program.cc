// forkpty on the test's loop.
#include "pty-program.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace morvik::test {

using namespace devkit;

PtyProgram::PtyProgram(Loop& loop, const std::vector<std::string>& command, int columns)
    : loop_(loop) {
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const winsize size{
      .ws_row = 24, .ws_col = static_cast<unsigned short>(columns), .ws_xpixel = 0, .ws_ypixel = 0};
  pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (pid_ == 0) {
    execv(words[0], words.data());
    _exit(127);
  }
  source_ = whenReadable(terminal_, [this] { return take(); });
}

PtyProgram::~PtyProgram() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  closeTerminal();
}

bool PtyProgram::take() {
  std::array<char, 4096> bytes{};
  const ssize_t count = read(terminal_, bytes.data(), bytes.size());
  if (count > 0) output_.append(bytes.data(), static_cast<std::size_t>(count));
  closed_ = count <= 0;
  return !closed_;
}

std::string PtyProgram::waitFor(const std::string& text) {
  std::size_t at = std::string::npos;
  const bool ended = !loop_.runUntil([&] {
    at = output_.find(text, heard_);
    return at != std::string::npos || closed_;
  });
  EXPECT_FALSE(ended || at == std::string::npos) << "never came: " << text << "\nbut:\n" << output_;
  if (at != std::string::npos) heard_ = at + text.size();
  return output_;
}

void PtyProgram::press(const std::string& keys) {
  EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

void PtyProgram::closeTerminal() {
  if (terminal_ < 0) return;
  source_.reset();
  close(terminal_);
  terminal_ = -1;
  closed_ = true;
}

bool PtyProgram::givesKeysAtOnce() const {
  termios settings{};
  return tcgetattr(terminal_, &settings) == 0 && (settings.c_lflag & (ICANON | ECHO)) == 0;
}

// Its end closes the terminal, unless that is closed already.
int PtyProgram::waitForEnd() {
  EXPECT_TRUE(loop_.runUntil([this] { return closed_; })) << output_;
  int status = 0;
  if (waitpid(pid_, &status, 0) != pid_) return -1;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace morvik::test
