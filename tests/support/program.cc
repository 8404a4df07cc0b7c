// A child process whose output is taken in the background.
#include "support/program.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace morvik::test {

Program::Program(const std::vector<std::string>& command) {
  std::signal(SIGPIPE, SIG_IGN);
  Pipe input = makePipe();
  Pipe output = makePipe();
  const int both = output.writing.get();
  pid_ = startProcess({.program = command.front(),
                       .arguments = command,
                       .environment = ownEnvironment(),
                       .streams = {input.reading.get(), both, both},
                       .prepare = [](int& /*complaints*/) -> const char* {
                         prctl(PR_SET_PDEATHSIG, SIGTERM);
                         return nullptr;
                       }});
  input_ = std::move(input.writing);
  output.writing.close();
  output_ = std::make_unique<Stream>(std::move(output.reading));
}

// What it has left behind could hold its output open.
Program::~Program() {
  if (pid_ > 0) end();
  try {
    output_->awaitEnd();
  } catch (const std::exception&) {
    ADD_FAILURE() << "output is still open";
  }
}

void Program::end() {
  kill(pid_, SIGTERM);
  try {
    waitUntil("a program's end", [this] { return waitpid(pid_, nullptr, WNOHANG) == pid_; });
  } catch (const std::exception&) {
    ADD_FAILURE() << "it does not end when it is told to; it said " << output_->soFar();
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

std::string Program::waitForLine(std::size_t from) const {
  std::string line;
  const bool found = output_->awaitThat([&](const std::string& soFar) {
    const std::size_t end = soFar.find('\n', from);
    if (end == std::string::npos) return false;
    line = soFar.substr(from, end - from);
    return true;
  });
  if (!found) throw std::runtime_error("no further line was said");
  return line;
}

void Program::say(const std::string& text) {
  if (write(input_.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    throw std::runtime_error("the program does not read: " + text);
}

void Program::signal(int number) const { kill(pid_, number); }

int Program::waitForEnd() {
  output_->awaitEnd();
  int status = 0;
  waitpid(std::exchange(pid_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ProgramResult run(const std::vector<std::string>& command) {
  Program program(command);
  program.endInput();
  const int status = program.waitForEnd();
  return {status, program.output()};
}

}  // namespace morvik::test
