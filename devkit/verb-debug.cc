// morvik-dev debug: `run` with a host that a debugger can attach to.
#include <limits>
#include <string>

#include "debug/discovery.h"
#include "debug/free-port.h"
#include "debug/inspect-options.h"
#include "page/admission.h"
#include "verb-run.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "debug",
    "Runs the applications in these folders as `morvik-dev run` does, on a host that a debugger\n"
    "can attach to: the developer tools of a Chrome browser, or an editor that speaks their\n"
    "protocol. A pause holds the application's timers as well. Each folder has a port of its own,\n"
    "which it keeps over restarts.",
    "Examples:\n"
    "  morvik-dev debug my-app\n"
    "  morvik-dev debug my-app --break\n"
    "  morvik-dev debug my-app --port=9300 --no-page",
    "FOLDER..."};

// Where GLib's options leave their values.
struct DebugAsked {
  int port = -1;
  gboolean breakFirst = FALSE;
};

// The address of the tools is to be copied: no browser opens one by a click.
std::string introduce(const std::string& name, const DebugTarget& target) {
  return "A debugger of " + name + " attaches at 127.0.0.1:" + std::to_string(target.port) +
         ". In Chrome, open chrome://inspect, or\n" + toolsAddressOf(target) + "\n";
}

std::vector<std::string> argumentsFor(const DebugTarget& target, bool breakFirst) {
  const std::string option = breakFirst ? "--inspect-brk=" : "--inspect=";
  return {option + std::to_string(target.port), "--inspect-id=" + target.id};
}

// The first folder's port is the one that was asked for. The others, and all where none was asked
// for, take the next free ones.
std::optional<std::string> addTarget(const DebugAsked& asked, std::uint16_t& next, DeskPlan& plan) {
  const std::size_t index = plan.session.hostArguments.size();
  const bool exactly = asked.port >= 0 && index == 0;
  std::string trouble;
  const auto port = freePort(next, !exactly, trouble);
  if (!port) return trouble;
  next = asked.port == 0 ? 0 : static_cast<std::uint16_t>(*port + 1);
  const DebugTarget target{.id = freshToken(), .title = "", .url = "", .port = *port};
  if (target.id.empty()) return "the system gives no random numbers";
  plan.greeting += introduce(shownNameOf(plan.session.folders[index]), target);
  plan.session.hostArguments.push_back(argumentsFor(target, asked.breakFirst != FALSE));
  return std::nullopt;
}

std::optional<std::string> addTargets(const DebugAsked& asked, DeskPlan& plan) {
  if (asked.port < -1 || asked.port > std::numeric_limits<std::uint16_t>::max())
    return "a port is a number from 0 to 65535";
  auto next = static_cast<std::uint16_t>(asked.port >= 0 ? asked.port : kUsualDebugPort);
  for (std::size_t index = 0; index < plan.session.folders.size(); ++index) {
    if (auto trouble = addTarget(asked, next, plan)) return trouble;
  }
  return std::nullopt;
}

}  // namespace

int runDebug(int argc, char** argv) {
  DebugAsked asked;
  const std::vector<GOptionEntry> entries = {
      {"port", 'p', 0, G_OPTION_ARG_INT, &asked.port,
       "The debugger's port of the first folder; 0 takes a free one (9229, or the next free one)",
       "PORT"},
      {"break", 'b', 0, G_OPTION_ARG_NONE, &asked.breakFirst,
       "Wait for a debugger, and stop before the first line", nullptr},
      {"inspect-brk", 0, G_OPTION_FLAG_HIDDEN, G_OPTION_ARG_NONE, &asked.breakFirst, nullptr,
       nullptr}};
  return runFolders({.help = kHelp,
                     .host = "morvikvm-debug",
                     .entries = entries,
                     .renamed = "device-port",
                     .complete = [&](DeskPlan& plan) { return addTargets(asked, plan); }},
                    argc, argv);
}

}  // namespace morvik::devkit
