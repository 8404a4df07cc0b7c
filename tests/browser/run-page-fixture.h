// `morvik-dev run` on folders of applications, with the real host, and its page in a real browser.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "browser-fixture.h"
#include "support/browser/running-folders.h"
#include "support/temporary-folder.h"

namespace morvik::test {

class RunPageTest : public BrowserTest {
 protected:
  // What the program said stands with a failure.
  void TearDown() override;

  /// Makes an application, or another main.js for one that is there.
  std::filesystem::path write(const std::string& app, const std::string& script,
                              const std::string& accesses = "");

  /// Runs the folders, with further options among them perhaps, and opens their page.
  void run(const std::vector<std::string>& words);
  void openPage() { BrowserTest::openPage(run_->page()); }

  /// The application's card says so in its attribute data-state.
  void expectState(const std::string& app, const std::string& state);
  /// The log shows this line of a script.
  void expectLogged(const std::string& text);

  TemporaryFolder folder_;
  std::unique_ptr<RunningFolders> run_;
};

/// The card of an application, as a CSS selector.
std::string cardOf(const std::string& app);

}  // namespace morvik::test
