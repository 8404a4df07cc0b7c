// The table of stimuli, and the way from a line to one of them.
#include "device/stimuli.h"

#include <algorithm>
#include <iterator>

#include "device/describe.h"
#include "device/handlers.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

void showHelp(Stimulation& stimulation);

constexpr Stimulus kStimuli[] = {
    {"button", "SIMPLE|DOUBLE|TRIPLE|MULTIPLE|LONG_START|LONG_STOP", "press the button",
     pressButton},
    {"rfid", "ID [IN|OUT] [app=N] [type=NAME] [pict=N] [color=NAME] [content=TEXT|hex=BYTES]",
     "bring a tag to the reader, or take it away", showTag},
    {"ear", "LEFT|RIGHT STEP", "turn an ear by hand, to a step from 0 to 16", turnEar},
    {"ears", "START_LEFT|STOP_LEFT|BLOCKED_LEFT|..._RIGHT [STEP [LENGTH]]",
     "tell one thing of an ear; a blocked ear stops what the ears are doing", tellOfEars},
    {"message", "UUID TEXT [type=TEXT|SOUND|XML|MIXED] [header=TEXT]",
     "put a message of this sender into the box", bringMessage},
    {"contact", "UUID [firstname=TEXT] [lastname=TEXT] [alias=TEXT] [object=ID[:NAME]]...",
     "keep a contact, in place of the one with this UUID", keepContact},
    {"credentials", "[NAME=VALUE]...|withhold|give",
     "keep credentials; a name with no value behind it loses its own; alone, tell the names",
     setCredentials},
    {"dock", "STATUS [CHANGE]", "tell the state of the dock, in two numbers", tellOfDock},
    {"recognition", "TEXT CONFIDENT [SEMANTIC]",
     "say something to the application that listens; SEMANTIC is XML", hearWords},
    {"noise", "", "answer the application that listens with a result without a recognition",
     hearNoise},
    {"player", "PLAY|STOP|PAUSE|RESUME|MUSIC_UPDATE",
     "tell one thing of the player; what plays goes on", tellOfPlayer},
    {"library", "ARTIST|FOLDER|PLAYLIST|GENRE|SONG [NAME...]",
     "put other names into a list of the music library", changeLibrary},
    {"call", "INCOMING WHO|BEGINNING [WHO]|TERMINATED [WHO]",
     "call from outside, take a call up, or end it; WHO may be left out in a call",
     callFromOutside},
    {"serial", "PORT TEXT [BASE]", "let a line come in on a serial port", readFromPort},
    {"stop", "", "stop interactive mode", stopInteractiveMode},
    {"refuse", "CODE [COMMAND] [COUNT|ALWAYS]",
     "answer the next command, or COUNT of them, with a code and nothing else; COMMAND is ears, "
     "multimedia, interactiveMode, ...: a wrong one is answered with all of them",
     refuseCommands},
    {"accept", "", "refuse nothing any more", acceptCommands},
    {"delay", "MS [COMMAND]", "answer commands that much later, 0 for at once", delayAnswers},
    {"finish", "led|ears|tts|asr|sound|record|photo|dock-led|dock-move [CODE [TEXT]]",
     "end what goes on, TERMINATED or as told", finishWork},
    {"pieces", "SIZE [PAUSE]",
     "send the next message in pieces of SIZE bytes, PAUSE milliseconds between them",
     sendInPieces},
    {"drop", "", "end the connection", dropConnection},
    {"help", "[WORD]", "show this", showHelp},
};

const Stimulus* find(const std::string& word) {
  const auto* found = std::find_if(std::begin(kStimuli), std::end(kStimuli),
                                   [&](const Stimulus& s) { return s.word == word; });
  return found != std::end(kStimuli) ? found : nullptr;
}

std::string usageOf(const Stimulus& stimulus) {
  return *stimulus.usage == '\0' ? stimulus.word
                                 : std::string(stimulus.word) + ' ' + stimulus.usage;
}

std::string helpOn(const Stimulus& stimulus) {
  return "  " + usageOf(stimulus) + "\n      " + stimulus.help + '\n';
}

void showHelp(Stimulation& stimulation) {
  const std::string word = stimulation.hasMore() ? stimulation.text("WORD") : "";
  const Stimulus* one = find(word);
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
  for (const Stimulus& stimulus : kStimuli) stimulation.tell(helpOn(stimulus));
}

using Words = std::unique_ptr<char*, Release<g_strfreev>>;

StimulusOutcome refuse(const std::string& trouble) { return {false, printable(trouble) + '\n'}; }

// Up to its value, which may be a secret on a line whose first word was forgotten.
std::string nameIn(const std::string& word) { return word.substr(0, word.find('=')); }

std::string asSentence(const std::string& trouble) {
  return trouble.ends_with('?') ? trouble : trouble + '.';
}

// Words too many, or in a wrong place, are often those of a text whose quotes were forgotten.
std::string correctUse(const Stimulus& stimulus) {
  const std::string usage = "Usage: " + usageOf(stimulus);
  return usage.find("TEXT") == std::string::npos ? usage
                                                 : usage + " (a TEXT with blanks stands in quotes)";
}

std::string noApplication(const Device& device, const std::string& word) {
  std::vector<std::string> numbers;
  for (const auto& [number, application] : device.applications()) {
    numbers.push_back(std::to_string(number));
  }
  return numbers.empty() ? "no application is connected"
                         : thereIsNo("application " + cited(word), numbers);
}

StimulusOutcome act(Device& device, std::optional<AppNumber> only, std::vector<std::string> words) {
  const Stimulus* stimulus = find(words.front());
  if (stimulus == nullptr) {
    return refuse("there is no stimulus " + cited(nameIn(words.front())) + ". help lists them.");
  }
  words.erase(words.begin());
  Stimulation stimulation(device, only, std::move(words));
  stimulus->act(stimulation);
  if (stimulation.trouble().empty()) return {true, stimulation.told()};
  return refuse(std::string(stimulus->word) + ": " + asSentence(stimulation.trouble()) + ' ' +
                correctUse(*stimulus));
}

StimulusOutcome actFor(Device& device, std::vector<std::string> words) {
  if (words.size() < 3) return refuse("app takes a number and a stimulus: app 2 button SIMPLE");
  guint64 number = 0;
  if (g_ascii_string_to_unsigned(words[1].c_str(), 10, 1, G_MAXUINT, &number, nullptr) == FALSE ||
      device.application(static_cast<AppNumber>(number)) == nullptr) {
    return refuse(noApplication(device, words[1]));
  }
  words.erase(words.begin(), words.begin() + 2);
  return act(device, static_cast<AppNumber>(number), std::move(words));
}

}  // namespace

std::span<const Stimulus> stimuli() { return kStimuli; }

StimulusOutcome stimulate(Device& device, std::string_view line) {
  if (g_utf8_validate_len(line.data(), line.size(), nullptr) == FALSE) {
    return refuse("the line is not UTF-8 text");
  }
  if (line.ends_with('\r')) line.remove_suffix(1);
  GErrorOwned error;
  int count = 0;
  char** parsed = nullptr;
  if (g_shell_parse_argv(std::string(line).c_str(), &count, &parsed, error.out()) == FALSE) {
    if (error.is(G_SHELL_ERROR, G_SHELL_ERROR_EMPTY_STRING)) return {true, ""};
    // GLib's own text repeats the line, and with it whatever secret is on it.
    return refuse("a quote is left open, or a backslash ends the line");
  }
  const Words owned(parsed);
  std::vector<std::string> words(parsed, parsed + count);
  return words.front() == "app" ? actFor(device, std::move(words))
                                : act(device, std::nullopt, std::move(words));
}

}  // namespace morvik::devkit
