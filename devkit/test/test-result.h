// How a test went.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

struct TestFailure {
  std::string message;                  ///< a sentence, with further lines perhaps
  std::string file;                     ///< where it was expected; empty when that is not known
  int line = 0;                         ///< from 1; 0 when it is not known
  int column = 0;                       ///< from 1; 0 as for the line
  std::string difference = {};          ///< lines with "-", "+" and " " in front; may be empty
  std::vector<std::string> story = {};  ///< what the applications said before, and why they ended
};

struct TestResult {
  std::string file;  ///< the script
  std::string name;  ///< of the test; empty when the script has none, or cannot be loaded
  std::optional<TestFailure> failure = {};
  std::vector<std::string> comments = {};  ///< what the script logged
  std::chrono::milliseconds took{0};       ///< of real time
  std::chrono::milliseconds passed{0};     ///< of the device's time
};

/// "test.js:12:3", as far as it is known.
std::string placeOf(const TestFailure& failure);

}  // namespace morvik::devkit
