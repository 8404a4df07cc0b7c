// The launcher: one launch line after the other, a child for each, three at most.
#include "host/launcher.h"

#include <fcntl.h>
#include <glib.h>
#include <libxml/xmlversion.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "host/app.h"
#include "host/engine.h"
#include "host/logging.h"
#include "host/memory.h"
#include "host/morvik-data.h"
#include "host/rehearsal.h"
#include "host/system-log.h"

namespace morvik {
namespace {

// The size handed to the read: one read takes a character less.
constexpr int kLineSize = 4095;

// As the launcher counts. What the handler does to it must not tear.
volatile std::sig_atomic_t nbChild = 0;

// Runs only while the launcher waits for a line (see readLine), so that it interrupts no other log
// call. An application has it too, and no children: what it tells there waits for nothing. One wait
// for each signal, kept simple: two children that end together can be counted once, and whoever
// writes launch lines then meets the refusal with one application less.
void childExited(int /*signal*/) {
  const PromptRecords prompt;
  g_debug("end process: sigchild");
  int status = 0;
  const pid_t ended = wait(&status);
  nbChild = nbChild - 1;
  g_debug("end process: %d nbChild %d", static_cast<int>(ended), static_cast<int>(nbChild));
}

// No signal for a child that only stops or goes on, as by a debugger or a shell's job control: the
// one wait in the handler would block until some child really ends, and the launcher with it. The
// read that the handler interrupts starts again by itself.
void watchChildren() {
  struct sigaction action {};
  action.sa_handler = childExited;
  action.sa_flags = SA_NOCLDSTOP | SA_RESTART;
  sigaction(SIGCHLD, &action, nullptr);
}

// Holds SIGCHLD back except where it is let in, and remembers the mask that the launcher was given.
class ChildSignals {
 public:
  ChildSignals() { sigprocmask(SIG_BLOCK, &only_, &given_); }
  void letIn() const { sigprocmask(SIG_UNBLOCK, &only_, nullptr); }
  void holdBack() const { sigprocmask(SIG_BLOCK, &only_, nullptr); }
  void restoreMask() const { sigprocmask(SIG_SETMASK, &given_, nullptr); }

 private:
  static sigset_t childSignal() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    return set;
  }
  sigset_t only_ = childSignal();
  sigset_t given_{};
};

// End of input is not looked at, kept simple as well: the buffer keeps the line before, which
// counts again. Whoever closes the launcher's input sees the last application started up to the
// limit, and then "too many mvm ignore request" without end on standard output.
void readLine(std::array<char, kLineSize>& line, const ChildSignals& signals) {
  signals.letIn();
  [[maybe_unused]] const char* ignored = std::fgets(line.data(), kLineSize, stdin);
  signals.holdBack();
}

// Lines must reach a pipe at once and must not wait in a buffer that a child would print again; the
// input's buffer is made here so that no allocation happens while the handler may run.
void setUpStreams() {
  static std::array<char, BUFSIZ> inputBuffer;
  std::setvbuf(stdin, inputBuffer.data(), _IOFBF, inputBuffer.size());
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

// When a child ends, its standard library sets back the position of a standard input that it shares
// with the launcher, who would then read the same lines for ever. So the child gets its own.
void leaveStandardInput() {
  const int nothing = open("/dev/null", O_RDONLY);
  if (nothing < 0) return;
  dup2(nothing, STDIN_FILENO);
  close(nothing);
}

void runChild(MorvikData& instance, const ChildSignals& signals) {
  leaveStandardInput();
  signals.restoreMask();
  limitMemory();
  runApp(instance);
}

class Launcher {
 public:
  explicit Launcher(LaunchOptions& options) : options_(options) {}

  // One pass of the read loop. False when the loop is to end.
  bool readAndLaunch() {
    MorvikData instance;
    readLine(line_, signals_);
    const std::size_t length = std::strlen(line_.data());
    g_message("MorvikVM buffer:%s : len:%d", line_.data(), static_cast<int>(length));
    if (length < 2) {
      g_message("MorvikVM buffer:vide -> break");
      return false;
    }
    if (line_[length - 1] == '\n') line_[length - 1] = '\0';
    instance.options = &options_;
    instance.setCmdLine(line_.data());
    return launch(instance);
  }

 private:
  // False in a child whose application has ended.
  bool launch(MorvikData& instance) {
    g_message("nbChild %d", static_cast<int>(nbChild));
    if (nbChild >= kMaxApps) {
      std::puts("too many mvm ignore request");
      return true;
    }
    nbChild = nbChild + 1;
    // A fork that fails costs its slot for good, without a word.
    if (fork() != 0) return true;
    runChild(instance, signals_);
    return false;
  }

  LaunchOptions& options_;
  ChildSignals signals_;
  std::array<char, kLineSize> line_{};
};

}  // namespace

int runLauncher(int argc, char** argv) {
  LaunchOptions options;
  watchChildren();
  setUpStreams();
  parseOptions(argc, argv, options);
  xmlCheckVersion(20707);
  openLog(options);
  g_message("MorvikVM started...");
  g_message("params: %s", options.app_folder);
  Engine::prepare(rehearse);

  Launcher launcher(options);
  while (launcher.readAndLaunch()) {
  }
  Engine::giveUpPrepared();
  closeSystemLog();
  return 0;
}

}  // namespace morvik
