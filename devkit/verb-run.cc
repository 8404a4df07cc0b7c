// morvik-dev run: turns folders into running applications, with a device to look at and press.
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "check/check.h"
#include "desk.h"
#include "options.h"
#include "run/system-log.h"
#include "state-folder.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr VerbHelp kHelp = {
    "run",
    "Runs the applications in these folders, up to three, on a virtual device, and shows what\n"
    "they say and what becomes of them. A file that is saved restarts its application. The\n"
    "device is on a page, whose address comes first: there it is seen, pressed and talked to.",
    "In a terminal, keys restart and launch applications and press the device's button; ? lists\n"
    "them. Ctrl-C ends everything. Colours are shown on a terminal, unless NO_COLOR is set.\n\n"
    "Examples:\n"
    "  morvik-dev run my-app\n"
    "  morvik-dev run apps/hello apps/ear-dance --open\n"
    "  morvik-dev run my-app --no-page --grep=error | tee log\n"
    "  morvik-dev run my-app --device=192.168.1.20:7410",
    "FOLDER..."};

// Where GLib's options leave their values.
struct Asked {
  int seconds = 0;
  int devicePort = 0;
  int page = 0;
  gboolean noPage = FALSE;
  gboolean open = FALSE;
  gboolean all = FALSE;
  char* level = nullptr;
  char* pattern = nullptr;
  char* device = nullptr;
  char* host = nullptr;
  char* state = nullptr;
  char* record = nullptr;
  char** instances = nullptr;
  char** folders = nullptr;
};

std::string taken(char* text, const std::string& otherwise = "") {
  const GText owned(text);
  return text != nullptr ? text : otherwise;
}

std::vector<std::string> taken(char** texts) {
  const std::unique_ptr<char*, Release<g_strfreev>> owned(texts);
  std::vector<std::string> taken;
  for (char** text = texts; text != nullptr && *text != nullptr; ++text) taken.emplace_back(*text);
  return taken;
}

std::string ownFolder() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path();
}

// The host that was built with this program, or the one that is installed.
std::string usualHost() {
  const fs::path beside = fs::path(ownFolder()) / "morvikvm";
  std::error_code error;
  if (fs::exists(beside, error)) return beside;
  const GText found(g_find_program_in_path("morvikvm"));
  return found ? found.get() : beside.string();
}

bool isPort(int port) { return port >= 0 && port <= std::numeric_limits<std::uint16_t>::max(); }

// Fills the plan; the text tells what makes no sense.
std::optional<std::string> readFilter(Asked& asked, RunLogFilter& filter) {
  const std::string level = taken(asked.level, "message");
  const std::string pattern = taken(asked.pattern);
  const auto least = levelOf(level);
  if (!least)
    return "there is no level " + level + "; levels are debug, message, warning and fatal";
  filter.least = *least;
  filter.all = asked.all != FALSE;
  if (pattern.empty()) return std::nullopt;
  GErrorOwned error;
  filter.pattern.reset(
      g_regex_new(pattern.c_str(), G_REGEX_CASELESS, G_REGEX_MATCH_DEFAULT, error.out()));
  if (!filter.pattern) return "--grep: " + std::string(error.text());
  return std::nullopt;
}

std::optional<std::string> readPlan(Asked& asked, DeskPlan& plan) {
  for (const std::string& folder : taken(asked.folders)) plan.session.folders.emplace_back(folder);
  plan.session.instances = taken(asked.instances);
  plan.session.check = checkApplication;
  plan.session.host = taken(asked.host, usualHost());
  plan.realDevice = taken(asked.device);
  plan.stateFolder = taken(asked.state, usualStateFolder());
  plan.record = taken(asked.record);
  plan.devicePort = static_cast<std::uint16_t>(asked.devicePort);
  plan.page = static_cast<std::uint16_t>(asked.page);
  if (asked.noPage != FALSE) plan.page.reset();
  plan.openPage = asked.open != FALSE;
  plan.seconds = asked.seconds;
  if (auto trouble = readFilter(asked, plan.filter)) return trouble;
  if (plan.session.folders.empty()) return "which folder? One to three are taken";
  if (plan.session.folders.size() > kMostApplications)
    return "the device runs three applications at most";
  if (!isPort(asked.devicePort) || !isPort(asked.page)) return "a port is a number from 0 to 65535";
  if (asked.seconds < 0) return "--seconds takes a whole number above 0";
  if (asked.open != FALSE && asked.noPage != FALSE) return "--open needs the page";
  return std::nullopt;
}

// Without a system log, as in many containers, each line of an application's log would go to the
// console, which is slow. Somebody who listens, or a lack of rights, is no reason to stop.
int runDesk(DeskPlan plan) {
  SystemLog standIn([](std::string_view /*record*/) {});
  [[maybe_unused]] const auto somebodyListens = standIn.listen("/dev/log");
  Desk desk(std::move(plan));
  const auto trouble = desk.run();
  if (!trouble) return EXIT_SUCCESS;
  std::fprintf(stderr, "morvik-dev run: %s\n", trouble->c_str());
  return EXIT_FAILURE;
}

}  // namespace

int runRun(int argc, char** argv) {
  Asked asked;
  const GOptionEntry entries[] = {
      {"open", 0, 0, G_OPTION_ARG_NONE, &asked.open, "Open the page in the browser", nullptr},
      {"page", 0, 0, G_OPTION_ARG_INT, &asked.page, "The page's port; 0 takes a free one (0)",
       "PORT"},
      {"no-page", 0, 0, G_OPTION_ARG_NONE, &asked.noPage, "Do without the page", nullptr},
      {"level", 0, 0, G_OPTION_ARG_STRING, &asked.level,
       "Lines from this level on: debug, message, warning, fatal (message)", "LEVEL"},
      {"grep", 0, 0, G_OPTION_ARG_STRING, &asked.pattern,
       "Lines with a match of this regular expression", "PATTERN"},
      {"all", 0, 0, G_OPTION_ARG_NONE, &asked.all, "Lines that say nothing to an author as well",
       nullptr},
      {"device", 0, 0, G_OPTION_ARG_STRING, &asked.device,
       "A real device server in the place of the virtual device", "HOST:PORT"},
      {"port", 'p', 0, G_OPTION_ARG_INT, &asked.devicePort,
       "The virtual device's port; 0 takes a free one (0)", "PORT"},
      {"host", 0, 0, G_OPTION_ARG_FILENAME, &asked.host,
       "The morvikvm to launch with (the one beside this program, or in PATH)", "FILE"},
      {"state", 0, 0, G_OPTION_ARG_FILENAME, &asked.state,
       "Where to keep what outlives the device ($XDG_STATE_HOME/morvik-dev)", "FOLDER"},
      {"record", 0, 0, G_OPTION_ARG_FILENAME, &asked.record,
       "Keep everything that passes in a new file, without credentials", "FILE"},
      {"instance", 0, 0, G_OPTION_ARG_STRING_ARRAY, &asked.instances,
       "The third word of a folder's launch line, in the order of the folders (DEVICE, its "
       "address)",
       "TEXT"},
      {"seconds", 0, 0, G_OPTION_ARG_INT, &asked.seconds, "End by itself after so many seconds",
       "N"},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &asked.folders, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  DeskPlan plan;
  const auto trouble = readPlan(asked, plan);
  if (status) return *status;
  return trouble ? refuseUsage(kHelp.name, *trouble) : runDesk(std::move(plan));
}

}  // namespace morvik::devkit
