#include "support/system/host-process.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "support/leaks.h"
#include "support/process.h"

namespace morvik::test {
namespace {

Descriptor opened(const std::string& path) {
  Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) throw std::system_error(errno, std::generic_category(), path);
  return file;
}

// Makes fork fail as it does where no process can be had. Glibc forks with clone.
bool forbidFork() {
  constexpr unsigned kNumber = offsetof(seccomp_data, nr);
  constexpr unsigned kFails = SECCOMP_RET_ERRNO | EAGAIN;
  std::array<sock_filter, 6> steps{{{BPF_LD | BPF_W | BPF_ABS, 0, 0, kNumber},
                                    {BPF_JMP | BPF_JEQ | BPF_K, 2, 0, SYS_clone},
                                    {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, SYS_clone3},
                                    {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
                                    {BPF_RET | BPF_K, 0, 0, kFails},
                                    {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW}}};
  sock_fprog program{steps.size(), steps.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// Descriptors that exec would close must be taken as well; `complaints` moves out of the way.
bool takeLowDescriptors(int& complaints) {
  const rlimit enough{FD_SETSIZE + 256, FD_SETSIZE + 256};
  if (setrlimit(RLIMIT_NOFILE, &enough) != 0) return false;
  complaints = fcntl(complaints, F_DUPFD_CLOEXEC, FD_SETSIZE);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (int number = STDERR_FILENO + 1; number < FD_SETSIZE; ++number)
    if (number != nothing && dup2(nothing, number) < 0) return false;
  return fcntl(nothing, F_SETFD, 0) == 0;
}

// Behind the fork: nothing here allocates.
const char* prepareHost(const HostOptions& options, const LogSocket& log, int& complaints) {
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  const char* failed = log.enterNamespace();
  if (failed != nullptr) return failed;
  if (options.forkFails && !forbidFork()) return "seccomp";
  if (options.lowDescriptorsTaken && !takeLowDescriptors(complaints)) return "descriptors";
  return nullptr;
}

// What is left at an ordinary end is looked for by a process of the sanitizer's own, which a host
// that cannot fork does not get.
std::string addressSanitizerFor(const HostOptions& options) {
  return std::string("ASAN_OPTIONS=verify_asan_link_order=0:allocator_may_return_null=1") +
         (options.forkFails ? ":detect_leaks=0" : "");
}

// A host that has lost memory ends with a status that no test expects, and tells more on its
// standard error.
std::string leakSanitizerFor(const std::string& folder) {
  const std::string file = folder + "/may-be-left";
  std::ofstream(file) << kMayBeLeft;
  return "LSAN_OPTIONS=print_suppressions=0:exitcode=99:suppressions=" + file;
}

std::vector<std::string> environmentFor(const HostOptions& options, const std::string& folder) {
  std::vector<std::string> environment{"PATH=/usr/bin:/bin", "LC_ALL=C",
                                       addressSanitizerFor(options), leakSanitizerFor(folder)};
  environment.insert(environment.end(), options.environment.begin(), options.environment.end());
  if (options.shortTimersFrom) {
    environment.emplace_back("LD_PRELOAD=" SHORT_TIMERS);
    environment.push_back("SHORT_TIMERS_FROM=" + std::to_string(*options.shortTimersFrom));
  }
  return environment;
}

// A descriptor that becomes readable when the process ends; none when there is no such process.
Descriptor handleOf(pid_t process) {
  return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

Exit exitOf(int status) {
  return WIFSIGNALED(status) ? killedBy(WTERMSIG(status)) : exited(WEXITSTATUS(status));
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Exit& exit) {
  if (exit.bySignal) return stream << "killed by " << strsignal(exit.code);
  return stream << "exited with " << exit.code;
}

HostProcess::HostProcess(const HostOptions& options) : log_(folder_.path(), options.keepsOnlyNews) {
  // Applications that the launcher leaves behind become children of the test.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  signal(SIGPIPE, SIG_IGN);
  start(options);
}

void HostProcess::start(const HostOptions& options) {
  Pipe input = makePipe();
  if (options.input) input.reading = opened(*options.input);
  Pipe output = makePipe();
  Pipe errors = makePipe();
  Start start{.program = MORVIKVM,
              .arguments = {options.programName},
              .environment = environmentFor(options, folder_.path()),
              .streams = {input.reading.get(), output.writing.get(), errors.writing.get()}};
  start.arguments.insert(start.arguments.end(), options.arguments.begin(), options.arguments.end());
  start.prepare = [&](int& complaints) { return prepareHost(options, log_, complaints); };
  pid_ = startProcess(start);
  input_ = std::move(input.writing);
  output_ = std::make_unique<Stream>(std::move(output.reading));
  errors_ = std::make_unique<Stream>(std::move(errors.reading));
}

HostProcess::~HostProcess() { killAll(); }

// The host is a process group of its own. As long as its first process is not reaped, nobody else
// can have the group's number.
void HostProcess::killAll() {
  if (std::exchange(finished_, true)) return;
  kill(-pid_, SIGKILL);
  while (waitpid(-pid_, nullptr, 0) > 0 || errno == EINTR) {
  }
}

void HostProcess::line(std::string_view line) { write(std::string(line) + "\n"); }

void HostProcess::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(input_.get(), bytes.data(), bytes.size());
    if (written < 0) throw std::system_error(errno, std::generic_category(), "standard input");
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

LogRecord HostProcess::waitForLog(std::string_view text, std::optional<pid_t> from) const {
  return log_.await(text, [&](const LogRecord& record) {
    return record.text == text && (!from || record.pid == *from);
  });
}

LogRecord HostProcess::waitForLog(std::string_view what, const LogMatcher& matches) const {
  return log_.await(what, matches);
}

LogRecord HostProcess::waitForLogTimes(std::string_view text, int times,
                                       std::optional<pid_t> from) const {
  int seen = 0;
  return log_.await(text, [&](const LogRecord& record) {
    if (record.text == text && (!from || record.pid == *from)) ++seen;
    return seen == times;
  });
}

LogRecord HostProcess::waitForNews(std::string_view part) {
  return log_.awaitFrom(newsSeen_, part, [&](const LogRecord& record) {
    return record.text.find(part) != std::string::npos;
  });
}

std::vector<std::string> HostProcess::texts(pid_t from) const {
  std::vector<std::string> texts;
  for (const LogRecord& record : log())
    if (record.pid == from) texts.push_back(record.text);
  return texts;
}

void HostProcess::waitUntilEnded(pid_t process) {
  const Descriptor handle = handleOf(process);
  if (handle.get() < 0 && errno == ESRCH) return;  // ended and reaped
  if (handle.get() < 0) throw std::system_error(errno, std::generic_category(), "process");
  if (!becomesReady(handle.get(), POLLIN))
    throw std::runtime_error("process " + std::to_string(process) + " did not end");
}

bool HostProcess::alive(pid_t process) {
  const Descriptor handle = handleOf(process);
  pollfd watched{handle.get(), POLLIN, 0};
  return handle.get() >= 0 && poll(&watched, 1, 0) == 0;
}

std::string HostProcess::statusOf(pid_t process, const std::string& name) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(name + ":")) return line.substr(line.find_last_of('\t') + 1);
  return "";
}

void HostProcess::waitUntilLooping(pid_t process) {
  constexpr int kTimes = 3;
  const auto slept = [&] {
    const std::string times = statusOf(process, "voluntary_ctxt_switches");
    return times.empty() ? 0 : std::stoi(times);
  };
  const int before = slept();
  waitUntil("a process in its loop", [&] { return !alive(process) || slept() > before + kTimes; });
}

// Not reaped here: its number keeps standing for the group.
Exit HostProcess::waitForExit() {
  waitUntilEnded(pid_);
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT) != 0)
    throw std::system_error(errno, std::generic_category(), "launcher");
  return info.si_code == CLD_EXITED ? exited(info.si_status) : killedBy(info.si_status);
}

Exit HostProcess::waitForExit(pid_t app) {
  waitUntilEnded(app);
  int status = 0;
  if (waitpid(app, &status, WNOHANG) != app)
    throw std::runtime_error("the launcher was still there to reap " + std::to_string(app));
  return exitOf(status);
}

void HostProcess::leaveApps() {
  line("");
  const Exit exit = waitForExit();
  if (exit == exited(0)) return;
  std::ostringstream text;
  text << "the launcher " << exit;
  throw std::runtime_error(text.str());
}

std::string HostProcess::transcript() {
  return "--- log (process, priority, text)\n" + describe(log()) + "--- standard output\n" +
         output_->soFar() + "--- standard error\n" + errors_->soFar() + "---\n";
}

}  // namespace morvik::test
