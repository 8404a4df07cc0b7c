// The list of stimuli, help, and the way from a line to one of them. From JSON: stimuli-json.cc.
#include "device/stimuli.h"

#include <algorithm>
#include <memory>

#include "device/features/features.h"
#include "device/nearest.h"
#include "device/owned.h"
#include "device/questions.h"
#include "device/stimulation.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

void showHelp(Stimulation& stimulation);

constexpr Argument kHelpArguments[] = {
    {.name = "word", .usage = "WORD", .what = nullptr, .needed = false}};
constexpr Stimulus kHelp = {
    "help",  Stimulus::Group::kHelp, Stimulus::For::kApplications, kHelpArguments, "show this",
    showHelp};

// In brackets when it may be left out, and with dots behind it when there may be many.
std::string pieceOf(const Argument& row) {
  const bool named = row.form == Argument::Form::kNamed;
  std::string words = (named ? std::string(row.name) + '=' : "") + usageOf(row);
  if (row.needed) return words;
  const char* dots = row.many ? "..." : "";
  return named ? '[' + words + ']' + dots : '[' + words + dots + ']';
}

// "[STEP [LENGTH]]": one that may be left out stands within the one before, unless that one can be
// told from it.
bool standsWithin(const Argument& row, const Argument* before) {
  return before != nullptr && !row.needed && row.form == Argument::Form::kWord && !before->needed &&
         before->form == Argument::Form::kWord && before->standsIn == nullptr;
}

std::string fromArguments(std::span<const Argument> rows) {
  std::string usage;
  std::size_t within = 0;
  const Argument* before = nullptr;
  for (const Argument& row : rows) {
    std::string piece = pieceOf(row);
    const bool nested = standsWithin(row, before);
    if (nested || row.insteadOfLast) usage.pop_back();
    if (!nested) within = 0;
    if (nested && ++within > 1) usage.pop_back();
    if (row.insteadOfLast) {
      usage += '|' + piece.substr(1);
    } else {
      usage += (usage.empty() ? "" : " ") + piece + std::string(within, ']');
    }
    before = &row;
  }
  return usage;
}

std::string helpOn(const Stimulus& stimulus) {
  return "  " + usageOf(stimulus) + "\n      " + stimulus.help + '\n';
}

void showHelp(Stimulation& stimulation) {
  const std::string word = stimulation.text("word");
  const Stimulus* one = findStimulus(word);
  if (!word.empty() && one == nullptr)
    stimulation.refuse("there is no stimulus " + cited(word) + "; help alone lists them");
  if (!stimulation.understood()) return;
  if (one != nullptr) {
    stimulation.tell(helpOn(*one));
    return;
  }
  stimulation.tell(
      "What the world does to the device, one line each. \"app N\" in front means one "
      "application,\notherwise all are meant. A text with blanks stands in quotes.\n");
  for (const Stimulus* stimulus : stimuli()) stimulation.tell(helpOn(*stimulus));
}

using CWords = GTexts;

// Up to its value, which may be a secret on a line whose first word was forgotten.
std::string nameIn(const std::string& word) { return word.substr(0, word.find('=')); }

std::string perhapsMeant(const std::string& name) {
  std::vector<std::string> names;
  for (const Stimulus* stimulus : stimuli()) names.emplace_back(stimulus->name);
  const auto near = nearest(name, names);
  return near ? ": perhaps " + *near : "";
}

std::string asSentence(const std::string& trouble) {
  return trouble.ends_with('?') ? trouble : trouble + '.';
}

// Words too many, or in a wrong place, are often those of a text whose quotes were forgotten.
std::string correctUse(const Stimulus& stimulus) {
  const std::string usage = "Usage: " + usageOf(stimulus);
  return usage.find("TEXT") == std::string::npos ? usage
                                                 : usage + " (a TEXT with blanks stands in quotes)";
}

Outcome act(Device& device, std::optional<AppNumber> only, std::vector<std::string> words) {
  const std::string name = words.front();
  words.erase(words.begin());
  return stimulateBy(device, only, name,
                     [&](Arguments& arguments) { arguments.fromWords(std::move(words)); });
}

Outcome actFor(Device& device, std::vector<std::string> words) {
  if (words.size() < 3) return refused("app takes a number and a stimulus: app 2 button SIMPLE");
  const std::string number = words[1];
  words.erase(words.begin(), words.begin() + 2);
  const auto only = applicationCalled(device, number);
  return only ? act(device, *only, std::move(words)) : refused(noApplication(device, number));
}

}  // namespace

std::string usageOf(const Stimulus& stimulus) {
  const std::string words =
      stimulus.usage != nullptr ? stimulus.usage : fromArguments(stimulus.arguments);
  return words.empty() ? stimulus.name : std::string(stimulus.name) + ' ' + words;
}

std::vector<const Stimulus*> stimuli() {
  std::vector<const Stimulus*> all;
  for (const Feature* feature : features()) {
    for (const Stimulus& stimulus : feature->stimuli) all.push_back(&stimulus);
  }
  for (const Stimulus& question : questions()) all.push_back(&question);
  all.push_back(&kHelp);
  std::stable_sort(all.begin(), all.end(),
                   [](const Stimulus* a, const Stimulus* b) { return a->group < b->group; });
  return all;
}

const Stimulus* findStimulus(const std::string& name) {
  for (const Stimulus* stimulus : stimuli()) {
    if (name == stimulus->name) return stimulus;
  }
  return nullptr;
}

Outcome refused(const std::string& trouble) { return {false, printable(trouble) + '\n'}; }

std::optional<AppNumber> applicationCalled(const Device& device, const std::string& word) {
  guint64 number = 0;
  const bool is =
      g_ascii_string_to_unsigned(word.c_str(), 10, 1, G_MAXUINT, &number, nullptr) != FALSE;
  const auto called = static_cast<AppNumber>(number);
  return is && device.application(called) != nullptr ? std::optional(called) : std::nullopt;
}

std::string noApplication(const Device& device, const std::string& word) {
  std::vector<std::string> numbers;
  for (const auto& [number, application] : device.applications()) {
    numbers.push_back(std::to_string(number));
  }
  return numbers.empty() ? "no application is connected"
                         : thereIsNo("application " + cited(word), numbers);
}

Outcome stimulateBy(Device& device, std::optional<AppNumber> only, const std::string& name,
                    const std::function<void(Arguments& arguments)>& fill) {
  const Stimulus* stimulus = findStimulus(name);
  if (stimulus == nullptr) {
    return refused("there is no stimulus " + cited(nameIn(name)) + perhapsMeant(nameIn(name)) +
                   ". help lists them.");
  }
  const Events::Pause pause(device.events());
  Stimulation stimulation(device, *stimulus, only);
  fill(stimulation.arguments());
  stimulus->act(stimulation);
  if (stimulation.trouble().empty()) return {true, stimulation.told()};
  return refused(std::string(stimulus->name) + ": " + asSentence(stimulation.trouble()) + ' ' +
                 correctUse(*stimulus));
}

bool isQuestion(std::string_view line) {
  const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
  const std::size_t end = std::min(line.find_first_of(" \t\r", begin), line.size());
  const Stimulus* stimulus = findStimulus(std::string(line.substr(begin, end - begin)));
  return stimulus != nullptr && stimulus->group == Stimulus::Group::kHelp;
}

Outcome stimulate(Device& device, std::string_view line) {
  if (g_utf8_validate_len(line.data(), line.size(), nullptr) == FALSE) {
    return refused("the line is not UTF-8 text");
  }
  if (line.ends_with('\r')) line.remove_suffix(1);
  GErrorOwned error;
  int count = 0;
  char** parsed = nullptr;
  if (g_shell_parse_argv(std::string(line).c_str(), &count, &parsed, error.out()) == FALSE) {
    if (error.is(G_SHELL_ERROR, G_SHELL_ERROR_EMPTY_STRING)) return {true, ""};
    // GLib's own text repeats the line, and with it whatever secret is on it.
    return refused("a quote is left open, or a backslash ends the line");
  }
  const CWords owned(parsed);
  std::vector<std::string> words(parsed, parsed + count);
  return words.front() == "app" ? actFor(device, std::move(words))
                                : act(device, std::nullopt, std::move(words));
}

}  // namespace morvik::devkit
