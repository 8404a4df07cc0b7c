// What the page shows of folders that run.
#include "run-page-fixture.h"

namespace morvik::test {

namespace fs = std::filesystem;

fs::path RunPageTest::write(const std::string& app, const std::string& script,
                            const std::string& accesses) {
  writeApplication(folder_ / app, script, accesses);
  return folder_ / app;
}

void RunPageTest::run(const std::vector<std::string>& words) {
  run_ = std::make_unique<RunningFolders>(folder_.path(), MORVIK_DEV, words);
  openPage();
}

void RunPageTest::TearDown() {
  if (HasFailure() && run_) ADD_FAILURE() << "the program said:\n" << run_->program().output();
  BrowserTest::TearDown();
}

void RunPageTest::expectState(const std::string& app, const std::string& state) {
  expectThere(cardOf(app) + "[data-state=" + state + "]");
}

void RunPageTest::expectLogged(const std::string& text) {
  expect(
      "[...document.querySelectorAll('#log .line[data-kind=script] .what')].some((line) => "
      "line.textContent.includes(" +
      quoted(text) + "))");
}

std::string cardOf(const std::string& app) { return ".application[data-app=\"" + app + "\"]"; }

}  // namespace morvik::test
