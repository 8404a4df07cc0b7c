// Every stimulus in both of its forms.
#pragma once

#include <string>
#include <vector>

namespace morvik::test {

struct StimulusRow {
  const char* before;  // a command that must come first, or nothing
  const char* line;
  const char* json;
};

// At least one row for each, with arguments of every kind.
const std::vector<StimulusRow>& everyStimulus();

}  // namespace morvik::test
