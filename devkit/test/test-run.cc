// Script by script, test by test.
#include "test/test-run.h"

#include <algorithm>

#include "run/folder.h"
#include "test/test-case.h"

namespace morvik::devkit {

namespace fs = std::filesystem;

std::string placeOf(const TestFailure& failure) {
  std::string place = failure.file;
  if (failure.line > 0) place += ':' + std::to_string(failure.line);
  if (failure.line > 0 && failure.column > 0) place += ':' + std::to_string(failure.column);
  return place;
}

std::vector<fs::path> testScriptsIn(const fs::path& folder) {
  std::vector<fs::path> scripts;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (isTestScript(entry.path())) scripts.push_back(entry.path());
  }
  std::ranges::sort(scripts);
  return scripts;
}

bool TestRun::run() {
  for (const fs::path& script : plan_.scripts) {
    if (!stopped_) runScript(script);
  }
  return run_ > 0 && failed_ == 0 && !stopped_;
}

// How many tests there are is known once the script has been loaded for the first one.
void TestRun::runScript(const fs::path& script) {
  std::size_t count = 1;
  for (std::size_t index = 0; index < count && !stopped_; ++index) {
    TestCase test(plan_, script, [this] { g_main_loop_quit(loop_.get()); });
    test.start(index);
    if (!test.isFinished()) g_main_loop_run(loop_.get());
    count = std::max(count, test.names().size());
    if (stopped_ || test.isLeftOut()) continue;
    ++run_;
    failed_ += test.result().failure ? 1 : 0;
    told_(test.result());
  }
}

void TestRun::stop() {
  stopped_ = true;
  g_main_loop_quit(loop_.get());
}

}  // namespace morvik::devkit
