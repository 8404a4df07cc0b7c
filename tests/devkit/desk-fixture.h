// A fixture for tests of `morvik-dev run`: applications of the test's own, and a look at what is
// left.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "loop.h"
#include "support/application-folder.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

/// Processes that the tool leaves behind become children of the test's.
class DeskTest : public ::testing::Test {
 protected:
  DeskTest();
  ~DeskTest() override;

  /// Makes an application, or another main.js for one that is there. Written in place.
  std::filesystem::path write(const std::string& app, const std::string& script,
                              const std::string& accesses = "<access>led</access>");

  /// The words of `morvik-dev run` without a page, then these.
  static std::vector<std::string> command(const std::vector<std::string>& words);

  /// The test has no children, or soon has none, and its folder has no links of the tool.
  void expectNothingLeft();
  /// The test soon has no children.
  [[nodiscard]] bool isSoonAlone();
  /// The condition holds soon; for what nothing announces.
  [[nodiscard]] bool comesTrue(const std::function<bool()>& condition);

  Loop loop_;
  test::TemporaryFolder folder_;
};

/// The children of a process.
std::vector<int> childrenOf(int process);
/// How many file descriptors a process has.
std::size_t descriptorsOf(int process);
/// How often the text stands in another.
int countOf(const std::string& text, const std::string& within);

}  // namespace morvik::test
