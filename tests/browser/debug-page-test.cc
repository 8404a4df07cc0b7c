// An application that a debugger has paused, on the page.
#include <filesystem>
#include <fstream>

#include "run-page-fixture.h"

namespace morvik::test {
namespace {

namespace fs = std::filesystem;

class PageOfADebugger : public RunPageTest {
 protected:
  // A host that waits for a debugger, in the place of the usual one.
  std::string waitingHost() {
    const fs::path host = folder_ / "waiting-host";
    const fs::path debugHost = fs::path(MORVIK_DEV).parent_path() / "morvikvm-debug";
    std::ofstream(host) << "#!/bin/sh\nexec " << debugHost << " --inspect-brk=0 \"$@\"\n";
    fs::permissions(host, fs::perms::owner_all);
    return host;
  }
};

TEST_F(PageOfADebugger, saysThatAnApplicationIsPausedAndWhere) {
  run({"--host=" + waitingHost(), write("app", "log('begun');")});
  expectThere(cardOf("app") + "[data-paused]");
  expectText(cardOf("app") + " .state", "paused before main.js, until a debugger comes");
  expect("document.querySelector('.autokill').hidden");
}

}  // namespace
}  // namespace morvik::test
