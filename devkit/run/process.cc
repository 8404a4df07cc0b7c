// posix_spawn and process handles (pidfd).
#include "run/process.h"

#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

namespace morvik::devkit {
namespace {

// Through the system call: glibc's header for these is no header of C++ before 2.37.
int openHandle(pid_t pid) { return static_cast<int>(syscall(SYS_pidfd_open, pid, 0)); }

bool sendTo(int handle, int signal) {
  return syscall(SYS_pidfd_send_signal, handle, signal, nullptr, 0) == 0;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// A variable that is given stands in front of the one that this program has.
std::vector<char*> environmentWith(const std::vector<std::string>& further) {
  std::vector<char*> all = pointersTo(further);
  all.pop_back();
  for (char** entry = environ; *entry != nullptr; ++entry) all.push_back(*entry);
  all.push_back(nullptr);
  return all;
}

class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

class SpawnStreams {
 public:
  explicit SpawnStreams(const CommandLine& command) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, command.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions_, command.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions_, command.errors, STDERR_FILENO);
  }
  ~SpawnStreams() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnStreams(const SpawnStreams&) = delete;
  SpawnStreams& operator=(const SpawnStreams&) = delete;
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

int statusOf(const siginfo_t& info) {
  return info.si_code == CLD_EXITED ? W_EXITCODE(info.si_status, 0) : W_EXITCODE(0, info.si_status);
}

}  // namespace

bool becomeReaper() { return prctl(PR_SET_CHILD_SUBREAPER, 1) == 0; }

Spawned spawn(const CommandLine& command) {
  const SpawnAttributes attributes;
  const SpawnStreams streams(command);
  const std::vector<char*> arguments = pointersTo(command.arguments);
  const std::vector<char*> environment = environmentWith(command.environment);
  Spawned spawned;
  spawned.error = posix_spawn(&spawned.pid, command.arguments.front().c_str(), streams.get(),
                              attributes.get(), arguments.data(), environment.data());
  if (spawned.error != 0) spawned.pid = 0;
  return spawned;
}

Process::Process(pid_t pid, Ended ended) : pid_(pid), handle_(openHandle(pid)) {
  if (!handle_.valid()) return;
  source_ = whenReadable(handle_.get(), [ended = std::move(ended)] {
    ended();
    return false;
  });
}

bool Process::hasEnded() const { return waitForEnd(0); }

bool Process::waitForEnd(int milliseconds) const {
  if (!handle_.valid()) return true;
  pollfd watched{handle_.get(), POLLIN, 0};
  int ready = 0;
  while ((ready = poll(&watched, 1, milliseconds)) < 0 && errno == EINTR) {
  }
  return ready > 0;
}

std::optional<int> Process::reap() const {
  if (!handle_.valid()) return std::nullopt;
  siginfo_t info{};
  const int failed = waitid(P_PIDFD, static_cast<id_t>(handle_.get()), &info, WEXITED | WNOHANG);
  if (failed != 0 || info.si_pid == 0) return std::nullopt;
  return statusOf(info);
}

bool Process::send(int signal) const { return handle_.valid() && sendTo(handle_.get(), signal); }

}  // namespace morvik::devkit
