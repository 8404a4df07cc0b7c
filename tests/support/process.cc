// fork and exec, with the failures of the new process told to the old one.
#include "support/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace morvik::test {
namespace {

// Pointers to what a process is started with, made before the fork: behind it nothing may allocate.
struct Launch {
  const Start* start;
  int complaints;
  std::vector<char*> arguments;
  std::vector<char*> environment;
};

// Ends the half-made process; its parent reads the complaint.
[[noreturn]] void complain(int complaints, const char* step) {
  dprintf(complaints, "%s: %s", step, strerrordesc_np(errno));
  _exit(127);
}

[[noreturn]] void becomeProgram(const Launch& launch) {
  int complaints = launch.complaints;
  setpgid(0, 0);
  signal(SIGPIPE, SIG_DFL);
  for (int stream = 0; stream < 3; ++stream)
    dup2(launch.start->streams.at(static_cast<std::size_t>(stream)), stream);
  const char* failed = launch.start->prepare ? launch.start->prepare(complaints) : nullptr;
  if (failed != nullptr) complain(complaints, failed);
  execve(launch.start->program.c_str(), launch.arguments.data(), launch.environment.data());
  complain(complaints, launch.start->program.c_str());
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throw std::system_error(errno, std::generic_category(), "pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

pid_t startProcess(const Start& start) {
  Pipe complaints = makePipe();
  const Launch launch{&start, complaints.writing.get(), pointersTo(start.arguments),
                      pointersTo(start.environment)};
  const pid_t pid = fork();
  if (pid < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (pid == 0) becomeProgram(launch);
  setpgid(pid, pid);
  complaints.writing.close();
  const std::string complaint = Stream(std::move(complaints.reading)).awaitEnd();
  if (!complaint.empty()) throw std::runtime_error("cannot start a program: " + complaint);
  return pid;
}

std::vector<std::string> ownEnvironment() {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable)
    variables.emplace_back(*variable);
  return variables;
}

}  // namespace morvik::test
