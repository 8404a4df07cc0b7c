// One state for each question.
#include "terminal/key-menu.h"

#include <algorithm>
#include <iterator>

namespace morvik::devkit {
namespace {

struct Meaning {
  const char* key;
  KeyCommand::Kind kind;
  const char* hint;
  const char* help;
};

constexpr Meaning kMeanings[] = {
    {"r", KeyCommand::Kind::kRestart, "restart", "end an application and launch it again"},
    {"l", KeyCommand::Kind::kLaunch, "launch", "the same, plain, by a tag or by voice"},
    {"b", KeyCommand::Kind::kButton, "button", "press the button of the device"},
    {":", KeyCommand::Kind::kStimulus, "device",
     "tell the device what happens to it; \":help\" lists that"},
    {"p", KeyCommand::Kind::kPage, "page", "open the page with the device on it"},
    {"?", KeyCommand::Kind::kHelp, "help", "show this"},
    {"q", KeyCommand::Kind::kQuit, "quit", "end everything, as Ctrl-C does"},
};

constexpr char kEscapeKey[] = "\x1b";
constexpr char kBackspace[] = "\x7f";
constexpr char kOtherBackspace[] = "\b";

bool isControl(const std::string& key) {
  return key.size() == 1 && (static_cast<unsigned char>(key[0]) < 0x20 || key == kBackspace);
}

void removeLastCharacter(std::string& text) {
  while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0U) == 0x80U) {
    text.pop_back();
  }
  if (!text.empty()) text.pop_back();
}

}  // namespace

std::string launchTypeByTag(const std::string& id) { return "RFID;" + id + ";1;FLAT;0;WHITE;"; }

std::string launchTypeByVoice(const std::string& text) { return "ASR;" + text + ";"; }

std::optional<KeyCommand> KeyMenu::take(const std::string& key) {
  if (key == kEscapeKey) return ask(Asking::kNothing);
  switch (asking_) {
    case Asking::kNothing:
      return takeMeaning(key);
    case Asking::kWhich:
      return takeWhich(key);
    case Asking::kHow:
      return takeHow(key);
    default:
      return takeText(key);
  }
}

KeyMenu::Command KeyMenu::ask(Asking what) {
  asking_ = what;
  typed_.clear();
  return std::nullopt;
}

KeyMenu::Command KeyMenu::done() {
  ask(Asking::kNothing);
  return command_;
}

KeyMenu::Command KeyMenu::takeMeaning(const std::string& key) {
  const auto* meaning = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                     [&key](const Meaning& row) { return key == row.key; });
  if (meaning == std::end(kMeanings)) return std::nullopt;
  command_ = {.kind = meaning->kind};
  if (meaning->kind == KeyCommand::Kind::kStimulus) return ask(Asking::kLine);
  const bool isAboutOne =
      meaning->kind == KeyCommand::Kind::kRestart || meaning->kind == KeyCommand::Kind::kLaunch;
  if (!isAboutOne) return done();
  return apps_.size() > 1 ? ask(Asking::kWhich) : chosen();
}

KeyMenu::Command KeyMenu::takeWhich(const std::string& key) {
  if (key.size() != 1 || key[0] < '1' || key[0] > '9') return std::nullopt;
  const auto app = static_cast<std::size_t>(key[0] - '1');
  if (app >= apps_.size()) return std::nullopt;
  command_.app = app;
  return chosen();
}

KeyMenu::Command KeyMenu::chosen() {
  return command_.kind == KeyCommand::Kind::kRestart ? done() : ask(Asking::kHow);
}

KeyMenu::Command KeyMenu::takeHow(const std::string& key) {
  if (key == "t") return ask(Asking::kTag);
  if (key == "v") return ask(Asking::kVoice);
  if (key != "p" && key != "\n") return std::nullopt;
  command_.text = "plain";
  return done();
}

// What is left empty is not asked for.
KeyMenu::Command KeyMenu::takeText(const std::string& key) {
  if (key == kBackspace || key == kOtherBackspace) {
    removeLastCharacter(typed_);
  } else if (key == "\n") {
    if (typed_.empty()) return ask(Asking::kNothing);
    if (asking_ == Asking::kTag) command_.text = launchTypeByTag(typed_);
    if (asking_ == Asking::kVoice) command_.text = launchTypeByVoice(typed_);
    if (asking_ == Asking::kLine) command_.text = typed_;
    return done();
  } else if (!isControl(key)) {
    typed_ += key;
  }
  return std::nullopt;
}

std::string KeyMenu::prompt() const {
  switch (asking_) {
    case Asking::kNothing:
      return "";
    case Asking::kWhich: {
      std::string text = command_.kind == KeyCommand::Kind::kRestart ? "restart" : "launch";
      for (std::size_t app = 0; app < apps_.size(); ++app) {
        text += "  " + std::to_string(app + 1) + " " + apps_[app];
      }
      return text;
    }
    case Asking::kHow:
      return "launch " + apps_.at(command_.app) + "  p plain  t by tag  v by voice";
    case Asking::kTag:
      return "id of the tag: " + typed_;
    case Asking::kVoice:
      return "what is said: " + typed_;
    case Asking::kLine:
      return ":" + typed_;
  }
  return "";
}

std::string KeyMenu::help() {
  std::string text;
  for (const Meaning& row : kMeanings) text += std::string("  ") + row.key + "  " + row.help + "\n";
  return text;
}

std::string KeyMenu::hint() {
  std::string text;
  for (const Meaning& row : kMeanings) {
    text += std::string(text.empty() ? "" : "  ") + row.key + " " + row.hint;
  }
  return text;
}

}  // namespace morvik::devkit
