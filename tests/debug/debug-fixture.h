// `morvik-dev debug` on folders of a test's own, and a debugger that attaches to them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "debug-client.h"
#include "desk-fixture.h"
#include "support/program.h"

namespace morvik::test {

class DebugTest : public DeskTest {
 protected:
  /// Runs the folders without a page, unless it is asked for, on ports that are free.
  void start(const std::vector<std::string>& words);

  /// The address of the last launch's target.
  std::string target() const;
  /// Waits for so many launches.
  void waitForLaunches(int count) const;
  std::unique_ptr<DebugClient> attach();

  /// Sets a breakpoint at the first line of the folder's main.js that holds the text; its number
  /// from 1 on.
  static int setBreakpoint(DebugClient& client, const std::filesystem::path& folder,
                           const std::string& text);

  std::unique_ptr<Program> run_;
};

/// The file: address of a folder's main.js.
std::string scriptAddress(const std::filesystem::path& folder);

}  // namespace morvik::test
