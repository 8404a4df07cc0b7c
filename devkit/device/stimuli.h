// Every way in for what the world does to the device: lines such as "app 2 ear LEFT 5", and names
// with values. stimuli-json.h has the latter as JSON.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/arguments.h"
#include "device/device.h"
#include "device/stimulus.h"

namespace morvik::devkit {

/// All of them, in the order in which help lists them.
std::vector<const Stimulus*> stimuli();
/// Null when there is none of that name.
const Stimulus* findStimulus(const std::string& name);
/// Its name and the words that may stand behind it, as the help shows them.
std::string usageOf(const Stimulus& stimulus);

/// What became of a stimulus.
struct Outcome {
  bool done;         ///< one that is not done has changed nothing
  std::string text;  ///< for whoever asked: why it is not done, help, or nothing
};

/// Does what a line says. Words stand between blanks; a word with a blank in it stands in quotes.
/// "app N" in front means one application, otherwise all are meant. An empty line and one that
/// begins with # do nothing.
Outcome stimulate(Device& device, std::string_view line);

/// Whether a line asks for something, such as help, and does nothing.
bool isQuestion(std::string_view line);

/// What all ways in have in common: looks the stimulus up, has its arguments filled, and does it.
/// `only` is an application of the device, or nothing for all.
Outcome stimulateBy(Device& device, std::optional<AppNumber> only, const std::string& name,
                    const std::function<void(Arguments& arguments)>& fill);

/// The outcome of what cannot be done; its text fits on a line.
Outcome refused(const std::string& trouble);
/// The application of that number; nothing when there is none.
std::optional<AppNumber> applicationCalled(const Device& device, const std::string& word);
/// What a refusal says then.
std::string noApplication(const Device& device, const std::string& word);

}  // namespace morvik::devkit
