// What is tested, and with which programs.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "test/stage.h"

namespace morvik::devkit {

struct TestPlan {
  std::filesystem::path folder = {};                ///< of the application
  std::vector<std::filesystem::path> scripts = {};  ///< the files with its tests
  StageTools tools;
  /// Words that run a script by runTestScript, on its standard input; the file is added.
  std::vector<std::string> scriptCommand;
  std::chrono::milliseconds limit{30'000};  ///< of real time, for one test
  std::function<bool(const std::string&)> wanted =
      {};  ///< tests of other names are left out; null for all
};

}  // namespace morvik::devkit
