#include "compare/call-count.h"

#include <sys/ptrace.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>

#include "compare/program.h"

namespace morvik::bench {
namespace {

constexpr int kCallStop = SIGTRAP | 0x80;  // what PTRACE_O_TRACESYSGOOD makes of a call's two stops
constexpr double kLook = 0.0001;           // seconds between looks at a process that makes no call

// Traces a process for as long as it lives.
class Tracer {
 public:
  explicit Tracer(pid_t process)
      : process_(process),
        attached_(ptrace(PTRACE_SEIZE, process, nullptr, PTRACE_O_TRACESYSGOOD) == 0) {
    if (attached_) stop();
  }
  ~Tracer() {
    if (!attached_) return;
    stop();
    ptrace(PTRACE_DETACH, process_, nullptr, nullptr);
  }
  Tracer(const Tracer&) = delete;
  Tracer& operator=(const Tracer&) = delete;

  [[nodiscard]] bool attached() const { return attached_; }
  // Counts calls by their numbers until the time is over.
  std::map<std::uint64_t, int> count(double seconds);

 private:
  void stop() {
    if (stopped_) return;
    ptrace(PTRACE_INTERRUPT, process_, nullptr, nullptr);
    stopped_ = waitpid(process_, &status_, __WALL) == process_;
  }
  void goOn() {
    ptrace(PTRACE_SYSCALL, process_, nullptr, nullptr);
    stopped_ = false;
  }
  bool hasStopped() {
    stopped_ = waitpid(process_, &status_, __WALL | WNOHANG) == process_;
    return stopped_;
  }

  pid_t process_;
  bool attached_;
  bool stopped_ = false;
  int status_ = 0;
};

std::map<std::uint64_t, int> Tracer::count(double seconds) {
  std::map<std::uint64_t, int> calls;
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  goOn();
  while (std::chrono::steady_clock::now() < end) {
    if (!hasStopped()) {
      pass(kLook);
      continue;
    }
    __ptrace_syscall_info info{};
    if (WIFSTOPPED(status_) && WSTOPSIG(status_) == kCallStop &&
        ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info) > 0 &&
        info.op == PTRACE_SYSCALL_INFO_ENTRY)
      ++calls[info.entry.nr];
    goOn();
  }
  return calls;
}

}  // namespace

std::optional<double> callsOfATurn(pid_t process, double seconds) {
  Tracer tracer(process);
  if (!tracer.attached()) return std::nullopt;
  int all = 0;
  int most = 0;
  for (const auto& [number, times] : tracer.count(seconds)) {
    all += times;
    most = std::max(most, times);
  }
  constexpr int kSome = 3;  // fewer tell nothing of a turn
  if (most < kSome) return std::nullopt;
  return static_cast<double>(all) / most;
}

}  // namespace morvik::bench
