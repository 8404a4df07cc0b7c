// GSubprocess, without a main loop of the test's.
#include "support/browser/child.h"

#include <gio/gunixinputstream.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace morvik::test {
namespace {

void dieWithTheTest(gpointer /*data*/) { prctl(PR_SET_PDEATHSIG, SIGTERM); }

GSubprocess* spawn(const std::vector<std::string>& command) {
  std::vector<const char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(word.c_str());
  words.push_back(nullptr);
  constexpr auto kFlags =
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                    G_SUBPROCESS_FLAGS_STDERR_MERGE);
  GSubprocessLauncher* launcher = g_subprocess_launcher_new(kFlags);
  g_subprocess_launcher_set_child_setup(launcher, dieWithTheTest, nullptr, nullptr);
  GError* error = nullptr;
  GSubprocess* process = g_subprocess_launcher_spawnv(launcher, words.data(), &error);
  g_object_unref(launcher);
  if (process != nullptr) return process;
  const std::string why = error->message;
  g_clear_error(&error);
  throw std::runtime_error(command.front() + " does not start: " + why);
}

}  // namespace

Child::Child(const std::vector<std::string>& command) : process_(spawn(command)) {
  auto* pipe = G_UNIX_INPUT_STREAM(g_subprocess_get_stdout_pipe(process_.get()));
  output_ = std::make_unique<Stream>(Descriptor(dup(g_unix_input_stream_get_fd(pipe))));
}

Child::~Child() {
  g_subprocess_send_signal(process_.get(), SIGTERM);
  try {
    waitUntil("the child's end",
              [this] { return g_subprocess_get_identifier(process_.get()) == nullptr; });
  } catch (const std::runtime_error&) {
    g_subprocess_force_exit(process_.get());
  }
  g_subprocess_wait(process_.get(), nullptr, nullptr);
}

void Child::say(const std::string& text) const {
  g_output_stream_write_all(g_subprocess_get_stdin_pipe(process_.get()), text.data(), text.size(),
                            nullptr, nullptr, nullptr);
}

pid_t Child::pid() const {
  const char* identifier = g_subprocess_get_identifier(process_.get());
  return identifier != nullptr ? std::atoi(identifier) : -1;
}

}  // namespace morvik::test
