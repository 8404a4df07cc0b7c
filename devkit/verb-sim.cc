// morvik-dev sim: does something to the device of a running tool, waits for a state of it, and
// watches it.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app-words.h"
#include "control/condition.h"
#include "control/control-client.h"
#include "control/control-folder.h"
#include "device/owned.h"
#include "device/stimuli.h"
#include "options.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr double kUsualTimeout = 30;
constexpr double kLongestTimeout = 1e6;

struct SimPlan {
  std::string line;  // the stimulus; empty for none
  std::vector<Condition> conditions;
  int process = 0;  // 0 for the only one
  double timeout = kUsualTimeout;
  bool watch = false;
  bool list = false;
  bool json = false;
};

// From the tables, so that nothing is missing.
const std::string& simDescription() {
  static const std::string text = [] {
    std::string lines = "What can be done to the device:\n";
    for (const Stimulus* stimulus : stimuli()) {
      lines += "  " + usageOf(*stimulus) + "\n      " + stimulus->help + '\n';
    }
    lines += "\nWhat can be done to the applications of a run:\n";
    for (const AppWord& word : appWords()) {
      lines += "  " + std::string(word.name) + ' ' + word.usage + "\n      " + word.help + '\n';
    }
    lines +=
        "\nWhat --wait takes: NAME=VALUE, NAME!=VALUE, or NAME for something that is there. A "
        "name is\na path in the view that docs/device-json.md tells, such as ears.left, or one "
        "of these:\n";
    for (const ShortName& name : shortNames()) {
      std::string word = name.name;
      word.resize(13, ' ');
      lines += "  " + word + name.meaning + " (" + name.path + ")\n";
    }
    return lines +
           "\nThe exit status is 0 when all is done, 1 when something is refused or does not come, "
           "and 2 when\nthe command line makes no sense.\n\n"
           "Examples:\n"
           "  morvik-dev sim button SIMPLE\n"
           "  morvik-dev sim app 2 rfid d0021a0353184a03 IN\n"
           "  morvik-dev sim launch my-app tag d0021a0353184a03\n"
           "  morvik-dev sim button SIMPLE --wait led=red --timeout=2\n"
           "  morvik-dev sim --watch | jq -r .words\n";
  }();
  return text;
}

VerbHelp simHelp() {
  return {"sim",
          "Does to the device of a running `morvik-dev run` or `morvik-dev device` what its page "
          "can do,\nwaits for a state, or tells what happens. With several running ones, --to "
          "chooses.",
          simDescription().c_str(), "[STIMULUS...]"};
}

int simFails(const std::string& text) {
  std::fprintf(stderr, "morvik-dev sim: %s\n", text.c_str());
  return EXIT_FAILURE;
}

// False when nobody reads any more, which is no reason to complain.
bool printOut(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
         std::fflush(stdout) == 0;
}

std::string listOf(const std::vector<RunningTool>& tools) {
  std::string lines;
  for (const RunningTool& tool : tools) {
    const auto client = ControlClient::connect(tool.socket);
    if (client) lines += "  " + std::to_string(tool.process) + "  " + client->title() + '\n';
  }
  return lines;
}

int refuseMany(const std::string& text, const std::vector<RunningTool>& tools) {
  std::fprintf(stderr, "morvik-dev sim: %s\n%s", text.c_str(), listOf(tools).c_str());
  return kUsageError;
}

// Gives the exit status when there is none to talk to.
std::optional<int> choose(const SimPlan& plan, const std::vector<RunningTool>& tools,
                          RunningTool& chosen) {
  if (tools.empty())
    return simFails("nothing runs. Begin with morvik-dev run FOLDER, or morvik-dev device.");
  if (plan.process == 0 && tools.size() > 1)
    return refuseMany("several run: choose one by --to=PID", tools);
  for (const RunningTool& tool : tools) {
    if (plan.process != 0 && tool.process != plan.process) continue;
    chosen = tool;
    return std::nullopt;
  }
  return refuseMany("none runs as " + std::to_string(plan.process) + ". There are:", tools);
}

ControlClient::Clock::time_point deadlineOf(const SimPlan& plan) {
  return ControlClient::Clock::now() + std::chrono::duration_cast<ControlClient::Clock::duration>(
                                           std::chrono::duration<double>(plan.timeout));
}

std::string goneText() { return "the tool has ended"; }

int stimulate(ControlClient& client, const SimPlan& plan) {
  const auto outcome = client.ask(plan.line);
  if (!outcome) return simFails(goneText());
  const bool done = outcome->value("done", false);
  const std::string text = outcome->value("text", "");
  if (plan.json) {
    printOut(textOf(*outcome) + '\n');
  } else if (done) {
    printOut(text);
  } else {
    std::fprintf(stderr, "morvik-dev sim: %s", text.c_str());
  }
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}

// Looks again after each event, until it holds. A tool that is well answers at once, so that even
// with a timeout of 0 it is looked at once.
int wait(ControlClient& client, const Condition& condition, const SimPlan& plan) {
  constexpr std::chrono::seconds kPatience{5};
  const auto deadline = deadlineOf(plan);
  Json view = Json::object();
  while (true) {
    const auto answer = client.ask(R"({"view": true})", deadline + kPatience);
    if (!answer || !answer->contains("view")) break;
    view = (*answer)["view"];
    if (const auto strange = strangeName(condition, view)) return refuseUsage("sim", *strange);
    if (holds(condition, view)) return EXIT_SUCCESS;
    if (ControlClient::Clock::now() >= deadline || !client.hearOne(deadline)) break;
  }
  if (client.isOver()) return simFails(unmet(condition, view) + "; " + goneText());
  const GText seconds(g_strdup_printf("%g", plan.timeout));
  return simFails(unmet(condition, view) + ", after " + seconds.get() + " s");
}

int watch(ControlClient& client) {
  while (client.hearOne()) {
    if (std::ferror(stdout) != 0) return EXIT_SUCCESS;
  }
  return EXIT_SUCCESS;
}

int talk(ControlClient& client, const SimPlan& plan) {
  if (plan.watch) {
    client.onEvent([](const std::string& line, const Json& /*event*/) { printOut(line + '\n'); });
  }
  const bool hears = plan.watch || !plan.conditions.empty();
  if (hears && !client.ask(R"({"watch": true})")) return simFails(goneText());
  if (!plan.line.empty()) {
    const int status = stimulate(client, plan);
    if (status != EXIT_SUCCESS) return status;
  }
  for (const Condition& condition : plan.conditions) {
    const int status = wait(client, condition, plan);
    if (status != EXIT_SUCCESS) return status;
  }
  return plan.watch && plan.conditions.empty() ? watch(client) : EXIT_SUCCESS;
}

int simulate(const SimPlan& plan) {
  std::string trouble;
  const auto folder = controlFolder(trouble);
  if (!folder) return simFails(trouble);
  const auto tools = runningTools(*folder);
  if (plan.list) return printOut(listOf(tools)) ? EXIT_SUCCESS : EXIT_FAILURE;
  RunningTool chosen{};
  if (const auto status = choose(plan, tools, chosen)) return *status;
  auto client = ControlClient::connect(chosen.socket);
  if (!client) return simFails("the tool does not answer");
  return talk(*client, plan);
}

// The words as a line that the device takes apart again. One that holds blanks is a line already
// when it is the only one.
std::string lineFrom(char** words) {
  if (words == nullptr) return "";
  if (g_strv_length(words) == 1) return words[0];
  std::string line;
  for (char** word = words; *word != nullptr; ++word) {
    line += (line.empty() ? "" : " ") + std::string(GText(g_shell_quote(*word)).get());
  }
  return line;
}

std::optional<std::string> readConditions(char** texts, SimPlan& plan) {
  for (char** text = texts; text != nullptr && *text != nullptr; ++text) {
    const auto condition = conditionIn(*text);
    if (!condition) return std::string(*text) + " is no NAME=VALUE";
    plan.conditions.push_back(*condition);
  }
  return std::nullopt;
}

std::optional<std::string> wrongIn(const SimPlan& plan) {
  if (plan.line.empty() && plan.conditions.empty() && !plan.watch && !plan.list)
    return "what is to happen?";
  if (plan.line.find('\n') != std::string::npos) return "a stimulus is one line";
  if (!(plan.timeout >= 0 && plan.timeout <= kLongestTimeout))
    return "--timeout takes seconds, from 0 to 1000000";
  if (plan.process < 0) return "--to takes the process id of a running tool";
  return std::nullopt;
}

}  // namespace

int runSim(int argc, char** argv) {
  SimPlan plan;
  gboolean watches = FALSE;
  gboolean lists = FALSE;
  gboolean json = FALSE;
  char** waits = nullptr;
  char** words = nullptr;
  const GOptionEntry entries[] = {
      {"wait", 'w', 0, G_OPTION_ARG_STRING_ARRAY, &waits, "Wait for this state; may be given again",
       "NAME=VALUE"},
      {"timeout", 0, 0, G_OPTION_ARG_DOUBLE, &plan.timeout, "How long to wait for each (30)",
       "SECONDS"},
      {"watch", 0, 0, G_OPTION_ARG_NONE, &watches, "Print what happens, a line of JSON each",
       nullptr},
      {"to", 0, 0, G_OPTION_ARG_INT, &plan.process, "The running tool that is meant", "PID"},
      {"list", 0, 0, G_OPTION_ARG_NONE, &lists, "List the running tools", nullptr},
      {"json", 'j', 0, G_OPTION_ARG_NONE, &json, "The answer as JSON", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_STRING_ARRAY, &words, nullptr, nullptr},
      {}};
  const auto status = readOptions(simHelp(), entries, argc, argv);
  const GTexts waitsOwned(waits);
  const GTexts wordsOwned(words);
  if (status) return *status;
  plan.line = lineFrom(words);
  plan.watch = watches != FALSE;
  plan.list = lists != FALSE;
  plan.json = json != FALSE;
  if (const auto trouble = readConditions(waits, plan)) return refuseUsage("sim", *trouble);
  if (const auto trouble = wrongIn(plan)) return refuseUsage("sim", *trouble);
  // A pipe whose reader goes away is told by the write.
  std::signal(SIGPIPE, SIG_IGN);
  return simulate(plan);
}

}  // namespace morvik::devkit
