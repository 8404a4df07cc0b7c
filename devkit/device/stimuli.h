// What the world does to the device, told in lines such as "button SIMPLE" or "app 2 ear LEFT 5".
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "device/stimulation.h"

namespace morvik::devkit {

struct Stimulus {
  const char* word;
  const char* usage;  // the words that follow
  const char* help;
  void (*act)(Stimulation& stimulation);
};

// All of them, in the order in which help lists them.
std::span<const Stimulus> stimuli();

struct StimulusOutcome {
  bool done;         // a line that is not done has changed nothing
  std::string text;  // for the writer of the line: why it is not done, help, or nothing
};

// Does what a line says. Words stand between blanks; a word with a blank in it stands in quotes.
// "app N" in front means one application, otherwise all are meant. An empty line and one that
// begins with # do nothing.
StimulusOutcome stimulate(Device& device, std::string_view line);

}  // namespace morvik::devkit
