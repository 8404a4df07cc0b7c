// Folders, and the tool that runs them.
#include "run-page-fixture.h"

#include <fstream>

#include "support/browser/said.h"

namespace morvik::test {

namespace fs = std::filesystem;

fs::path RunPageTest::write(const std::string& app, const std::string& script,
                            const std::string& accesses) {
  fs::path folder = folder_ / app;
  fs::create_directories(folder);
  if (!fs::exists(folder / "descriptor.xml")) {
    std::ofstream(folder / "descriptor.xml")
        << "<descriptor><accesses>" << accesses << "</accesses></descriptor>";
  }
  std::ofstream(folder / "main.js") << script;
  return folder;
}

// What the tool keeps, for ever or for a while, goes into the test's own folder.
void RunPageTest::run(const std::vector<std::string>& words) {
  const std::string own = folder_.path();
  std::vector<std::string> command{"/usr/bin/env", "XDG_STATE_HOME=" + own, "TMPDIR=" + own,
                                   MORVIK_DEV, "run"};
  command.insert(command.end(), words.begin(), words.end());
  run_ = std::make_unique<Child>(command);
  address_ = saidBehind("The device is on this page: ", *run_);
  openPage();
}

void RunPageTest::expectState(const std::string& app, const std::string& state) {
  expectThere(cardOf(app) + "[data-state=" + state + "]");
}

void RunPageTest::expectLogged(const std::string& text) {
  expect("[...document.querySelectorAll('#log .line[data-kind=script] .what')].some((line) => "
         "line.textContent.includes(" +
         quoted(text) + "))");
}

std::string cardOf(const std::string& app) { return ".application[data-app=\"" + app + "\"]"; }

std::string interactiveScript(const std::string& onGrant) {
  return "var at = instanceName.split(':');\n"
         "morvik.connect(at[0], Number(at[1]));\n"
         "morvik.start(function () {\n" +
         onGrant + "\n});\n";
}

}  // namespace morvik::test
