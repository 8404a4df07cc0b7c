// What an application costs from its fork to the end of main.js, and to the end of its process, in
// a process that has prepared itself as the launcher does. No launch line, no server, no log.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "host/app.h"
#include "host/engine.h"
#include "host/launch-options.h"
#include "host/morvik-data.h"
#include "host/rehearsal.h"
#include "support/temporary-folder.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)
using Clock = std::chrono::steady_clock;

void writeApplication(const test::TemporaryFolder& folder) {
  std::filesystem::create_directory(folder / "app");
  std::ofstream(folder / "app/descriptor.xml")
      << "<descriptor><accesses><access>led</access><access>rfid</access></accesses></descriptor>";
  std::ofstream(folder / "app/main.js")
      << "var seen = [];"
         "function onTag(tag) { seen.push(tag.id); morvik.led.light('red'); return true; }"
         "morvik.rfid.addListener(onTag);";
}

// Tells the parent through the pipe that main.js has run.
[[noreturn]] void live(MorvikData& instance, int started) {
  const Engine engine;
  startApp(instance);
  [[maybe_unused]] const auto ignored = write(started, "", 1);
  _exit(0);
}

void launch(benchmark::State& state, bool toItsEnd) {
  const test::TemporaryFolder folder;
  writeApplication(folder);
  const std::string root = folder.path();
  LaunchOptions options;
  options.app_folder = root.c_str();
  MorvikData instance;
  instance.options = &options;
  instance.setCmdLine("app name launch");
  int pipe[2];
  if (::pipe(pipe) != 0) return state.SkipWithError("no pipe");
  for (auto _ : state) {
    const auto begun = Clock::now();
    const pid_t child = fork();
    if (child == 0) live(instance, pipe[1]);
    char byte = 0;
    if (child < 0 || read(pipe[0], &byte, 1) != 1) return state.SkipWithError("no child");
    const auto started = Clock::now();
    waitpid(child, nullptr, 0);
    const auto end = toItsEnd ? Clock::now() : started;
    state.SetIterationTime(std::chrono::duration<double>(end - begun).count());
  }
  close(pipe[0]);
  close(pipe[1]);
}

void start(benchmark::State& state) { launch(state, /*toItsEnd=*/false); }
BENCHMARK(start)->UseManualTime()->Unit(benchmark::kMicrosecond);

void startAndEnd(benchmark::State& state) { launch(state, /*toItsEnd=*/true); }
BENCHMARK(startAndEnd)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  // Not measured: the C library would give the lines to the console where no daemon listens.
  g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  Engine::prepare(rehearse);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  Engine::giveUpPrepared();
  return 0;
}
