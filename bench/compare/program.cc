#include "compare/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "support/process.h"

namespace morvik::bench {

struct Pipes {
  test::Pipe input = test::makePipe();
  test::Pipe said = test::makePipe();
};

namespace {

constexpr std::size_t kReadSize = 65536;

// Also when the benchmark is killed, nothing that it has started stays behind: a launcher whose
// input has ended would launch its last line for ever.
std::function<const char*(int&)> endingWithUs(std::function<const char*(int&)> prepare) {
  return [prepare = std::move(prepare)](int& complaints) -> const char* {
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) return "prctl";
    return prepare ? prepare(complaints) : nullptr;
  };
}

pid_t start(const Command& command, const Pipes& pipes) {
  const test::Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  const int said = pipes.said.writing.get();
  test::Start start{.program = command.words.at(0),
                    .arguments = command.words,
                    .environment = test::ownEnvironment(),
                    .streams = {command.input ? pipes.input.reading.get() : nothing.get(),
                                command.said == Said::kOutput ? said : nothing.get(),
                                command.said == Said::kErrors ? said : STDERR_FILENO},
                    .prepare = endingWithUs(command.prepare)};
  start.environment.insert(start.environment.end(), command.environment.begin(),
                           command.environment.end());
  return test::startProcess(start);
}

}  // namespace

void pass(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

void Output::await(std::string_view text) {
  for (;;) {
    const std::size_t found = unread_.find(text);
    if (found != std::string::npos) {
      unread_.erase(0, found + text.size());
      return;
    }
    std::array<char, kReadSize> bytes;
    const ssize_t size = test::becomesReady(source_.get(), POLLIN)
                             ? read(source_.get(), bytes.data(), bytes.size())
                             : -1;
    if (size <= 0)
      throw std::runtime_error("a program never said \"" + std::string(text) + "\" but:\n" +
                               unread_);
    unread_.append(bytes.data(), static_cast<std::size_t>(size));
  }
}

Program::Program(const Command& command) : Program(command, Pipes()) {}

Program::Program(const Command& command, Pipes pipes)
    : pid_(start(command, pipes)),
      input_(std::move(pipes.input.writing)),
      output_(std::move(pipes.said.reading)) {}

Program::~Program() {
  kill(-pid_, SIGKILL);  // with its children: it is a process group of its own
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void Program::write(std::string_view bytes) {
  if (::write(input_.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    throw std::system_error(errno, std::generic_category(), "a program's input");
}

}  // namespace morvik::bench
