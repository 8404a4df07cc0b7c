// morvik-dev complete: what may follow the words of a command line, for shells. Not among the verbs
// that help lists.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "app-words.h"
#include "config/config-text.h"
#include "control/condition.h"
#include "control/control-folder.h"
#include "device/owned.h"
#include "device/stimuli.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

using Words = std::vector<std::string>;

// What this program says, without its complaints.
std::string said(Words command) {
  command.insert(command.begin(), "/proc/self/exe");
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  char* output = nullptr;
  if (g_spawn_sync(nullptr, arguments.data(), nullptr, G_SPAWN_STDERR_TO_DEV_NULL, nullptr, nullptr,
                   &output, nullptr, nullptr, nullptr) == FALSE) {
    return "";
  }
  return GText(output).get();
}

// The first words of the lines that begin with two blanks and go on with a letter.
Words firstWords(const std::string& text, const std::string& indent) {
  Words words;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool fits = line.starts_with(indent) && line.size() > indent.size() &&
                      g_ascii_isalpha(line[indent.size()]) != FALSE;
    const std::size_t end = line.find(' ', indent.size());
    if (fits && end != std::string::npos)
      words.push_back(line.substr(indent.size(), end - indent.size()));
  }
  return words;
}

Words verbNames() { return firstWords(said({"help"}), "  "); }

// "  -p, --port=N    Port ..." and "  --open   ...": --port= and --open.
Words optionsOf(const std::string& verb) {
  Words options;
  std::istringstream lines(said({verb, "--help"}));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t begin = line.find("--");
    const bool isRow = begin == 2 || (begin == 6 && line.starts_with("  -"));
    if (!isRow) continue;
    const std::size_t end = std::min(line.find_first_of(" =", begin), line.size());
    const bool takesValue = end < line.size() && line[end] == '=';
    options.push_back(line.substr(begin, end - begin) + (takesValue ? "=" : ""));
  }
  return options;
}

Words runningProcesses() {
  std::string trouble;
  Words processes;
  const auto folder = controlFolder(trouble);
  if (!folder) return processes;
  for (const RunningTool& tool : runningTools(*folder)) {
    processes.push_back(std::to_string(tool.process));
  }
  return processes;
}

Words stateNames() {
  Words names;
  for (const ShortName& name : shortNames()) names.push_back(std::string(name.name) + '=');
  return names;
}

// The values of an option, of those that are no files.
Words valuesOf(const std::string& option) {
  if (option == "--to") return runningProcesses();
  if (option == "--wait") return stateNames();
  if (option == "--template") return firstWords(said({"new", "--templates"}), "");
  if (option == "--level") return {"debug", "message", "warning", "fatal"};
  if (option == "--events") return {"text", "json"};
  if (option == "--form") return {"text", "json"};
  return {};
}

Words stimulusNames() {
  Words names;
  for (const Stimulus* stimulus : stimuli()) names.emplace_back(stimulus->name);
  return names;
}

// What may stand at that place behind a stimulus' name: the choices of the word, and the named
// ones.
Words argumentsOf(const std::string& name, std::size_t place) {
  Words candidates;
  const Stimulus* stimulus = findStimulus(name);
  if (stimulus == nullptr) return candidates;
  std::size_t word = 0;
  for (const Argument& row : stimulus->arguments) {
    if (row.form == Argument::Form::kNamed) {
      candidates.push_back(std::string(row.name) + '=');
    } else if (row.choices != nullptr && (word++ == place || row.many)) {
      for (const std::string& choice : row.choices())
        candidates.push_back(row.kind == Argument::Kind::kPair ? choice + '=' : choice);
    } else {
      ++word;
    }
  }
  return candidates;
}

Words stimulusWords(std::span<const std::string> before) {
  if (!before.empty() && before.front() == "app") {
    if (before.size() < 2) return {};
    before = before.subspan(2);
  } else if (before.empty()) {
    Words names = stimulusNames();
    names.emplace_back("app");
    for (const AppWord& word : appWords()) names.emplace_back(word.name);
    return names;
  }
  return before.empty() ? stimulusNames() : argumentsOf(before.front(), before.size() - 1);
}

Words configWords(std::span<const std::string> before) {
  if (before.empty()) return {"build", "show", "set"};
  if (before.front() != "set" || before.size() < 2) return {};
  Words names;
  for (const std::string& field : fieldsOf(*net::quelta::zeph::message::ConfigApp::descriptor())) {
    const bool isGroup = field == "parameters" || field == "configInstance";
    names.push_back(field + (isGroup ? "." : "="));
  }
  return names;
}

// The words that are no options, nor the values of one that stand apart.
Words plainWords(std::span<const std::string> words) {
  Words plain;
  bool isValue = false;
  for (const std::string& word : words) {
    const bool takesNext = word == "--wait" || word == "-w" || word == "--to" ||
                           word == "--timeout" || word == "--output" || word == "-o";
    if (!isValue && !word.starts_with('-')) plain.push_back(word);
    isValue = takesNext;
  }
  return plain;
}

Words candidatesFor(std::span<const std::string> before, const std::string& current) {
  if (before.empty()) return verbNames();
  const std::string& verb = before.front();
  const std::size_t equals = current.find('=');
  if (current.starts_with("--") && equals != std::string::npos) {
    Words values = valuesOf(current.substr(0, equals));
    for (std::string& value : values) value.insert(0, current, 0, equals + 1);
    return values;
  }
  if (current.starts_with('-')) return optionsOf(verb);
  if (before.size() > 1 && before.back().starts_with("--")) {
    if (Words values = valuesOf(before.back()); !values.empty()) return values;
  }
  const Words plain = plainWords(before.subspan(1));
  if (verb == "help" && plain.empty()) return verbNames();
  if (verb == "sim") return stimulusWords(plain);
  return verb == "config" ? configWords(plain) : Words{};
}

}  // namespace

int runComplete(int argc, char** argv) {
  Words words(argv + 1, argv + argc);
  if (words.empty()) words.emplace_back();
  const std::string current = words.back();
  words.pop_back();
  for (const std::string& candidate : candidatesFor(words, current)) {
    if (candidate.starts_with(current)) std::puts(candidate.c_str());
  }
  return EXIT_SUCCESS;
}

}  // namespace morvik::devkit
