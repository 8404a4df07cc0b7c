// What the keys of `morvik-dev run` mean: which key does what, and what is asked before it is done.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

/// What somebody has asked for with keys.
struct KeyCommand {
  enum class Kind {
    kRestart,
    kLaunch,  ///< `text` is the launch type
    kButton,
    kPage,
    kQuit,
    kHelp,
    kStimulus,  ///< `text` is a line for the device
  };
  Kind kind = Kind::kHelp;
  std::size_t app = 0;  ///< for kRestart and kLaunch: which one, from 0
  std::string text = {};
};

/// Knows no terminal: takes keys, and tells what stands in the line where the answer is typed.
class KeyMenu {
 public:
  explicit KeyMenu(std::vector<std::string> apps) : apps_(std::move(apps)) {}

  /// The next key. What is to be done, once that is clear.
  std::optional<KeyCommand> take(const std::string& key);

  /// What is being asked, with what was typed so far; empty when nothing is.
  std::string prompt() const;

  /// All keys with their meaning, a line each.
  static std::string help();
  /// The same in one line.
  static std::string hint();

 private:
  using Command = std::optional<KeyCommand>;
  enum class Asking { kNothing, kWhich, kHow, kTag, kVoice, kLine };

  Command takeMeaning(const std::string& key);
  Command takeWhich(const std::string& key);
  Command takeHow(const std::string& key);
  Command takeText(const std::string& key);
  Command chosen();
  Command done();
  Command ask(Asking what);

  std::vector<std::string> apps_;
  Asking asking_ = Asking::kNothing;
  KeyCommand command_;
  std::string typed_;
};

/// The launch type of an application that is launched by a tag with this id, or by what was said.
std::string launchTypeByTag(const std::string& id);
std::string launchTypeByVoice(const std::string& text);

}  // namespace morvik::devkit
