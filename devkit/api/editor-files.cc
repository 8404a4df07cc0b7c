// Typings of scripts from the table of the script API, and typings of tests from the table of
// stimuli.
#include "api/editor-files.h"

#include <glib.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "api/toolbox-files.h"
#include "api/typings.h"
#include "device/stimuli-json.h"

namespace morvik::devkit {
namespace {

constexpr const char* kFolder = "devkit/api/files/";
constexpr std::string_view kStimuliMark = "  // @STIMULI@\n";
constexpr std::string_view kOwnMark = "Made by `morvik-dev types`";

std::string ownFile(const char* name) {
  std::string path = kFolder;
  path += name;
  return std::string(toolboxFile(path));
}

std::string choicesOf(const Json& argument) {
  std::string list;
  for (const Json& choice : argument["choices"]) {
    list += (list.empty() ? "'" : " | '") + choice.get<std::string>() + "'";
  }
  return list;
}

// In choices, letters of either case count; an editor is to complete them and to take others.
std::string typeOf(const Json& argument) {
  const std::string kind = argument["kind"];
  const bool hasChoices = argument.contains("choices") && !argument["choices"].empty();
  std::string type = "string";
  if (kind == "number") type = "number | string";
  if (kind == "pair") return "{ [name: string]: string }";
  if (hasChoices) type = choicesOf(argument) + " | (string & {})";
  return argument["many"] == true ? "Array<" + type + "> | " + type : type;
}

// "RfidArguments"
std::string argumentsNameOf(const Json& stimulus) {
  std::string name = stimulus["name"];
  name.front() = g_ascii_toupper(name.front());
  return name + "Arguments";
}

std::string argumentsOf(const Json& stimulus) {
  std::string text = "  interface " + argumentsNameOf(stimulus) + " {\n";
  for (const Json& argument : stimulus["arguments"]) {
    text += "    " + argument["name"].get<std::string>() + "?: " + typeOf(argument) + ";\n";
  }
  return text + "  }\n\n";
}

// Words in their order, and behind them an object with those that have names. More than a few words
// in a row nobody can read.
std::string formsOf(const Json& stimulus) {
  constexpr std::size_t kMostWords = 3;
  const std::string opening = "    " + stimulus["name"].get<std::string>() + "(";
  std::string forms = "    /** " + stimulus["help"].get<std::string>() + " */\n";
  if (stimulus["arguments"].empty()) return forms + opening + "): Promise<void>;\n";
  const std::string named = "named?: " + argumentsNameOf(stimulus) + "): Promise<void>;\n";
  std::string words;
  forms += opening + named;
  for (std::size_t count = 0; count < std::min(kMostWords, stimulus["arguments"].size()); ++count) {
    const Json& argument = stimulus["arguments"][count];
    words += argument["name"].get<std::string>() + ": " + typeOf(argument) + ", ";
    forms.append(opening).append(words).append(named);
  }
  return forms;
}

std::string stimuliTypings() {
  std::string interfaces;
  std::string text = "  interface Stimuli {\n";
  const Json table = stimuliJson();
  for (const Json& stimulus : table["stimuli"]) {
    if (stimulus["group"] == "help") continue;
    if (!stimulus["arguments"].empty()) interfaces += argumentsOf(stimulus);
    text += formsOf(stimulus);
  }
  return interfaces + text + "  }\n";
}

std::string testTypings() {
  std::string text = ownFile("morvik-test.d.ts");
  return text.replace(text.find(kStimuliMark), kStimuliMark.size(), stimuliTypings());
}

}  // namespace

std::map<std::string, std::string> editorFiles(
    const std::optional<std::set<std::string>>& granted) {
  return {{"morvik.d.ts", typings(granted)},
          {"morvik-test.d.ts", testTypings()},
          {"jsconfig.json", ownFile("jsconfig.json")}};
}

bool isOwnEditorFile(const std::string& content) {
  return content.substr(0, content.find("\n\n")).find(kOwnMark) != std::string::npos;
}

}  // namespace morvik::devkit
