// Words to applications.
#include "app-words.h"

#include <string>
#include <vector>

#include "device/nearest.h"
#include "device/owned.h"
#include "device/text.h"
#include "terminal/key-menu.h"

namespace morvik::devkit {
namespace {

using Words = std::vector<std::string>;

constexpr AppWord kAppWords[] = {
    {"restart", "[APP]", "end an application and launch it again, as it was launched last"},
    {"launch", "[APP] [plain|tag ID|voice TEXT]", "end what runs, and launch it in this way"},
    {"end", "[APP]", "end an application, and launch it with the next save"},
};

Words splitLine(std::string_view line) {
  int count = 0;
  char** parsed = nullptr;
  if (g_shell_parse_argv(std::string(line).c_str(), &count, &parsed, nullptr) == FALSE) return {};
  const GTexts owned(parsed);
  return {parsed, parsed + count};
}

const AppWord* appWordOf(const std::string& name) {
  for (const AppWord& word : kAppWords) {
    if (name == word.name) return &word;
  }
  return nullptr;
}

std::string noApp(const Session& session, const std::string& name) {
  Words names;
  for (const auto& app : session.apps()) names.push_back(app->name());
  const auto near = nearest(name, names);
  return near ? "there is no application " + cited(name) + ": perhaps " + *near
              : thereIsNo("application " + cited(name), names);
}

bool isWay(const std::string& word) { return word == "plain" || word == "tag" || word == "voice"; }

// Takes the name off the words, when it is there. Null when there is no such application.
RunningApp* takeApp(const Session& session, Words& words, std::string& trouble) {
  const bool isNamed =
      !words.empty() && (session.app(words.front()) != nullptr || !isWay(words.front()));
  if (!isNamed && session.apps().size() == 1) return session.apps().front().get();
  if (!isNamed) {
    trouble = "which application?";
    return nullptr;
  }
  RunningApp* app = session.app(words.front());
  if (app == nullptr) trouble = noApp(session, words.front());
  words.erase(words.begin());
  return app;
}

// The type of a launch; nothing when the words make no sense.
std::optional<std::string> launchTypeOf(const Words& words) {
  if (words.empty() || (words.size() == 1 && words.front() == "plain")) return "plain";
  if (words.size() != 2) return std::nullopt;
  if (words.front() == "tag") return launchTypeByTag(words.back());
  return words.front() == "voice" ? std::optional(launchTypeByVoice(words.back())) : std::nullopt;
}

Outcome refusedWord(const AppWord& word, const std::string& trouble) {
  return refused(std::string(word.name) + ": " + trouble + (trouble.ends_with('?') ? "" : ".") +
                 " Usage: " + word.name + ' ' + word.usage);
}

}  // namespace

std::span<const AppWord> appWords() { return kAppWords; }

std::optional<Outcome> actOnApps(Session& session, std::string_view line) {
  Words words = splitLine(line);
  const AppWord* word = words.empty() ? nullptr : appWordOf(words.front());
  if (word == nullptr) return std::nullopt;
  words.erase(words.begin());
  std::string trouble;
  RunningApp* app = takeApp(session, words, trouble);
  if (app == nullptr) return refusedWord(*word, trouble);
  const std::string_view name = word->name;
  const auto type = name == "launch" ? launchTypeOf(words) : std::nullopt;
  if (name == "launch" ? !type : !words.empty()) return refusedWord(*word, "that makes no sense");
  if (type) app->launch(*type);
  if (name == "restart") app->restart();
  if (name == "end") app->stop();
  return Outcome{.done = true, .text = ""};
}

}  // namespace morvik::devkit
