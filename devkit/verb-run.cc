// morvik-dev run: turns folders into running applications, with a device to look at and press.
#include "verb-run.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "check/check.h"
#include "desk.h"
#include "options.h"
#include "run/system-log.h"
#include "state-folder.h"
#include "usual-programs.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

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

// Where GLib's options leave their values; the table below points there.
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
Asked runAsked;

const GOptionEntry kRunEntries[] = {
    {"open", 0, 0, G_OPTION_ARG_NONE, &runAsked.open, "Open the page in the browser", nullptr},
    {"page", 0, 0, G_OPTION_ARG_INT, &runAsked.page, "The page's port; 0 takes a free one (0)",
     "PORT"},
    {"no-page", 0, 0, G_OPTION_ARG_NONE, &runAsked.noPage, "Do without the page", nullptr},
    {"level", 0, 0, G_OPTION_ARG_STRING, &runAsked.level,
     "Lines from this level on: debug, message, warning, fatal (message)", "LEVEL"},
    {"grep", 0, 0, G_OPTION_ARG_STRING, &runAsked.pattern,
     "Lines with a match of this regular expression", "PATTERN"},
    {"all", 0, 0, G_OPTION_ARG_NONE, &runAsked.all, "Lines that say nothing to an author as well",
     nullptr},
    {"device", 0, 0, G_OPTION_ARG_STRING, &runAsked.device,
     "A real device server in the place of the virtual device", "HOST:PORT"},
    {"port", 'p', 0, G_OPTION_ARG_INT, &runAsked.devicePort,
     "The virtual device's port; 0 takes a free one (0)", "PORT"},
    {"host", 0, 0, G_OPTION_ARG_FILENAME, &runAsked.host,
     "The host to launch with (the one beside this program, or in PATH)", "FILE"},
    {"state", 0, 0, G_OPTION_ARG_FILENAME, &runAsked.state,
     "Where to keep what outlives the device ($XDG_STATE_HOME/morvik-dev)", "FOLDER"},
    {"record", 0, 0, G_OPTION_ARG_FILENAME, &runAsked.record,
     "Keep everything that passes in a new file, without credentials", "FILE"},
    {"instance", 0, 0, G_OPTION_ARG_STRING_ARRAY, &runAsked.instances,
     "The third word of a folder's launch line, in the order of the folders (DEVICE, its "
     "address)",
     "TEXT"},
    {"seconds", 0, 0, G_OPTION_ARG_INT, &runAsked.seconds, "End by itself after so many seconds",
     "N"},
    {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &runAsked.folders, nullptr, nullptr},
    {}};

std::string taken(char* text, const std::string& otherwise = "") {
  const GText owned(text);
  return text != nullptr ? text : otherwise;
}

std::vector<std::string> taken(char** texts) {
  const GTexts owned(texts);
  std::vector<std::string> taken;
  for (char** text = texts; text != nullptr && *text != nullptr; ++text) taken.emplace_back(*text);
  return taken;
}

bool isPort(int port) { return port >= 0 && port <= std::numeric_limits<std::uint16_t>::max(); }

// Fills the plan; the text tells what makes no sense.
std::optional<std::string> readFilter(RunLogFilter& filter) {
  const std::string level = taken(runAsked.level, "message");
  const std::string pattern = taken(runAsked.pattern);
  const auto least = levelOf(level);
  if (!least)
    return "there is no level " + level + "; levels are debug, message, warning and fatal";
  filter.least = *least;
  filter.all = runAsked.all != FALSE;
  if (pattern.empty()) return std::nullopt;
  GErrorOwned error;
  filter.pattern.reset(
      g_regex_new(pattern.c_str(), G_REGEX_CASELESS, G_REGEX_MATCH_DEFAULT, error.out()));
  if (!filter.pattern) return "--grep: " + std::string(error.text());
  return std::nullopt;
}

std::optional<std::string> readPlan(const RunKind& kind, DeskPlan& plan) {
  for (const std::string& folder : taken(runAsked.folders))
    plan.session.folders.emplace_back(folder);
  plan.session.instances = taken(runAsked.instances);
  plan.session.check = checkApplication;
  plan.session.host = taken(runAsked.host, usualHost(kind.host));
  plan.realDevice = taken(runAsked.device);
  plan.stateFolder = taken(runAsked.state, usualStateFolder());
  plan.record = taken(runAsked.record);
  plan.devicePort = static_cast<std::uint16_t>(runAsked.devicePort);
  plan.page = static_cast<std::uint16_t>(runAsked.page);
  if (runAsked.noPage != FALSE) plan.page.reset();
  plan.openPage = runAsked.open != FALSE;
  plan.seconds = runAsked.seconds;
  if (auto trouble = readFilter(plan.filter)) return trouble;
  if (plan.session.folders.empty()) return "which folder? One to three are taken";
  if (plan.session.folders.size() > kMostApplications)
    return "the device runs three applications at most";
  if (!isPort(runAsked.devicePort) || !isPort(runAsked.page))
    return "a port is a number from 0 to 65535";
  if (runAsked.seconds < 0) return "--seconds takes a whole number above 0";
  if (runAsked.open != FALSE && runAsked.noPage != FALSE) return "--open needs the page";
  return kind.complete ? kind.complete(plan) : std::nullopt;
}

// Without a system log, as in many containers, each line of an application's log would go to the
// console, which is slow. Somebody who listens, or a lack of rights, is no reason to stop.
int runDesk(const char* verb, DeskPlan plan) {
  SystemLog standIn([](std::string_view /*record*/) {});
  [[maybe_unused]] const auto somebodyListens = standIn.listen("/dev/log");
  Desk desk(std::move(plan));
  const auto trouble = desk.run();
  if (!trouble) return EXIT_SUCCESS;
  std::fprintf(stderr, "morvik-dev %s: %s\n", verb, trouble->c_str());
  return EXIT_FAILURE;
}

// The first entries are the ones of `run`; an entry of the verb's own takes a name away from them.
std::vector<GOptionEntry> entriesOf(const RunKind& kind, const GOptionEntry* common) {
  std::vector<GOptionEntry> entries = kind.entries;
  for (; common->long_name != nullptr; ++common) {
    GOptionEntry entry = *common;
    const bool taken = std::ranges::any_of(kind.entries, [&](const GOptionEntry& own) {
      return std::string_view(own.long_name) == entry.long_name;
    });
    if (taken) {
      entry.long_name = kind.renamed;
      entry.short_name = 0;
    }
    entries.push_back(entry);
  }
  entries.push_back({});
  return entries;
}

}  // namespace

int runRun(int argc, char** argv) { return runFolders({.help = kHelp}, argc, argv); }

int runFolders(const RunKind& kind, int argc, char** argv) {
  const auto status = readOptions(kind.help, entriesOf(kind, kRunEntries).data(), argc, argv);
  DeskPlan plan;
  const auto trouble = readPlan(kind, plan);
  if (status) return *status;
  return trouble ? refuseUsage(kind.help.name, *trouble) : runDesk(kind.help.name, std::move(plan));
}

}  // namespace morvik::devkit
