// Runs the tests of an application, each with a process of its own for its script, a fresh device
// and a fresh application.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device/owned.h"
#include "test/test-plan.h"
#include "test/test-result.h"

namespace morvik::devkit {

/// The scripts in a folder: test.js and what ends with .test.js, by their names.
std::vector<std::filesystem::path> testScriptsIn(const std::filesystem::path& folder);

/// Works on the default main context, which it runs meanwhile.
class TestRun {
 public:
  using Told = std::function<void(const TestResult& result)>;

  /// Each result is told as soon as it is there.
  TestRun(TestPlan plan, Told told) : plan_(std::move(plan)), told_(std::move(told)) {}

  /// Gives whether all passed, of one test at least.
  bool run();
  /// Ends the test that runs and leaves the others; for a signal.
  void stop();
  bool isStopped() const { return stopped_; }

 private:
  void runScript(const std::filesystem::path& script);

  TestPlan plan_;
  Told told_;
  GLoop loop_{g_main_loop_new(nullptr, FALSE)};
  bool stopped_ = false;
  std::size_t run_ = 0;
  std::size_t failed_ = 0;
};

}  // namespace morvik::devkit
