// Results for readers: people, test harnesses, build servers and programs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "test/test-result.h"

namespace morvik::devkit {

/// Tells results on standard output as they come.
class TestReport {
 public:
  virtual ~TestReport() = default;
  virtual void told(const TestResult& result) = 0;
  /// All have been told.
  virtual void over() = 0;
};

/// Lines for a person; `colors` for a terminal that has some.
std::unique_ptr<TestReport> makePlainReport(bool colors);
/// TAP, version 14.
std::unique_ptr<TestReport> makeTapReport();
/// One JSON object at the end, on a line.
std::unique_ptr<TestReport> makeJsonReport(const std::string& folder);

/// All results as a file for build servers, in the form that JUnit began.
std::string junitOf(const std::string& folder, const std::vector<TestResult>& results);

}  // namespace morvik::devkit
