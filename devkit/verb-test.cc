// morvik-dev test: runs an application through a script of what happens to it and what is expected.
#include <glib-unix.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "options.h"
#include "run/run-log.h"
#include "test/reports.h"
#include "test/script-runner.h"
#include "test/test-run.h"
#include "usual-programs.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr double kLongestLimit = 86400;  // seconds

constexpr VerbHelp kHelp = {
    "test",
    "Tests the application in this folder: runs it on a virtual device of its own, through the\n"
    "tests in these files, or in test.js and *.test.js of the folder. Time does not wait: what\n"
    "takes a minute on a device is over in a moment.",
    "The exit status is 0 when all tests have passed, 1 when one has failed, and 2 when there is\n"
    "nothing to test. On a pipe the results are TAP, version 14.\n\n"
    "Examples:\n"
    "  morvik-dev test my-app\n"
    "  morvik-dev test my-app my-app/tags.test.js --grep='red tag'\n"
    "  morvik-dev test my-app --junit=results.xml",
    "FOLDER [FILE...]"};

struct TestOptions {
  gboolean json = FALSE;
  gboolean tap = FALSE;
  double limit = 30;
  char* junit = nullptr;
  char* pattern = nullptr;
  char* host = nullptr;
  char* script = nullptr;
  char** words = nullptr;
};

// What the options leave behind, in hands that let go of it.
struct TestOrder {
  explicit TestOrder(const TestOptions& options)
      : junit(options.junit), pattern(options.pattern), host(options.host), words(options.words) {}
  GText junit;
  GText pattern;
  GText host;
  GTexts words;
  GPattern wanted = {};
};

// Gives what makes no sense.
std::optional<std::string> readScripts(const TestOrder& order, TestPlan& plan) {
  if (!order.words) return "which folder?";
  plan.folder = order.words.get()[0];
  std::error_code error;
  if (!fs::is_directory(plan.folder, error)) return plan.folder.string() + " is no folder";
  for (char** file = order.words.get() + 1; *file != nullptr; ++file) {
    if (!fs::is_regular_file(*file, error)) return std::string(*file) + " is no file";
    plan.scripts.emplace_back(*file);
  }
  if (plan.scripts.empty()) plan.scripts = testScriptsIn(plan.folder);
  if (plan.scripts.empty())
    return "there is no test in " + plan.folder.string() + ": write one into test.js";
  return std::nullopt;
}

std::optional<std::string> readPattern(TestOrder& order, TestPlan& plan) {
  if (!order.pattern) return std::nullopt;
  GErrorOwned error;
  order.wanted.reset(
      g_regex_new(order.pattern.get(), G_REGEX_CASELESS, G_REGEX_MATCH_DEFAULT, error.out()));
  if (!order.wanted) return "--grep: " + std::string(error.text());
  plan.wanted = [&order](const std::string& name) {
    return g_regex_match(order.wanted.get(), name.c_str(), G_REGEX_MATCH_DEFAULT, nullptr) != FALSE;
  };
  return std::nullopt;
}

std::unique_ptr<TestReport> makeReport(const TestOptions& options, const std::string& folder) {
  if (options.json != FALSE) return makeJsonReport(folder);
  const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  if (options.tap != FALSE || !isTerminal) return makeTapReport();
  const char* refused = std::getenv("NO_COLOR");
  return makePlainReport(refused == nullptr || *refused == '\0');
}

gboolean stopTests(gpointer run) {
  static_cast<TestRun*>(run)->stop();
  return G_SOURCE_CONTINUE;
}

bool writeJunit(const char* file, const std::string& folder,
                const std::vector<TestResult>& results) {
  if (file == nullptr) return true;
  const std::string text = junitOf(folder, results);
  GErrorOwned error;
  if (g_file_set_contents(file, text.data(), static_cast<gssize>(text.size()), error.out()) != 0)
    return true;
  std::fprintf(stderr, "morvik-dev test: %s\n", error.text());
  return false;
}

bool hasClock(const TestPlan& plan) {
  std::error_code error;
  if (fs::exists(plan.tools.clock, error)) return true;
  std::fprintf(stderr, "morvik-dev test: there is no %s; it lies beside morvik-dev\n",
               plan.tools.clock.c_str());
  return false;
}

int runTests(TestPlan plan, const TestOptions& options, const TestOrder& order) {
  if (!hasClock(plan)) return EXIT_FAILURE;
  std::signal(SIGPIPE, SIG_IGN);
  const std::string folder = plan.folder;
  const auto report = makeReport(options, folder);
  std::vector<TestResult> results;
  TestRun run(std::move(plan), [&](const TestResult& result) {
    report->told(result);
    results.push_back(result);
  });
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) g_unix_signal_add(number, stopTests, &run);
  const bool passed = run.run();
  if (results.empty() && !run.isStopped()) return refuseUsage(kHelp.name, "no test has this name");
  report->over();
  return writeJunit(order.junit.get(), folder, results) && passed ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int runTest(int argc, char** argv) {
  TestOptions options;
  const GOptionEntry entries[] = {
      {"tap", 0, 0, G_OPTION_ARG_NONE, &options.tap, "As TAP, on a terminal too", nullptr},
      {"json", 'j', 0, G_OPTION_ARG_NONE, &options.json, "As JSON, one object at the end", nullptr},
      {"junit", 0, 0, G_OPTION_ARG_FILENAME, &options.junit,
       "Write the results into this file as well, as JUnit does", "FILE"},
      {"grep", 0, 0, G_OPTION_ARG_STRING, &options.pattern,
       "Only tests whose names have a match of this regular expression", "PATTERN"},
      {"limit", 0, 0, G_OPTION_ARG_DOUBLE, &options.limit,
       "Seconds of real time that a test may take (30)", "N"},
      {"host", 0, 0, G_OPTION_ARG_FILENAME, &options.host,
       "The morvikvm to launch with (the one beside this program, or in PATH)", "FILE"},
      {"script", 0, G_OPTION_FLAG_HIDDEN, G_OPTION_ARG_FILENAME, &options.script, nullptr, nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &options.words, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  TestOrder order(options);
  const GText script(options.script);
  if (status) return *status;
  if (script) return runTestScript(script.get(), STDIN_FILENO);
  if (!(options.limit > 0 && options.limit <= kLongestLimit))
    return refuseUsage(kHelp.name, "--limit takes a number above 0, up to 86400");
  TestPlan plan{
      .tools = {order.host ? order.host.get() : usualHost(), besideProgram("virtual-clock.so")},
      .scriptCommand = {ownProgram(), "test", "--script"},
      .limit = std::chrono::duration_cast<std::chrono::milliseconds>(
          std::chrono::duration<double>(options.limit))};
  auto trouble = readScripts(order, plan);
  if (!trouble) trouble = readPattern(order, plan);
  return trouble ? refuseUsage(kHelp.name, *trouble) : runTests(std::move(plan), options, order);
}

}  // namespace morvik::devkit
