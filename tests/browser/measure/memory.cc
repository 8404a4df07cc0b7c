// Three samples that do in 36 seconds what they usually do in an hour.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>

#include "measures.h"
#include "support/browser/browser.h"
#include "support/browser/running-folders.h"
#include "support/file-content.h"

namespace morvik::test {
namespace {

constexpr int kFaster = 100;
// The sample hello fades the LED every two seconds: a request, and an answer when it begins and
// when it is over.
constexpr int kMessagesOfAnHour = 3 * 1800 * 3;
constexpr int kHours = 2;
constexpr int kLooksAtAnHour = 5;

std::string fasterHello() {
  std::string script = contentOf(SOURCE_DIR "/apps/hello/main.js");
  for (const auto& [slow, fast] : {std::pair("setTimeout(2000,", 2000 / kFaster),
                                   std::pair("fade(color, 500,", 500 / kFaster)}) {
    const std::string text = slow;
    const std::size_t at = script.find(text);
    if (at == std::string::npos) throw std::runtime_error("hello has changed: no " + text);
    const std::size_t number = text.find_first_of("0123456789");
    script.replace(at + number, text.size() - number - 1, std::to_string(fast));
  }
  return script;
}

int messagesIn(const std::string& said) {
  int count = 0;
  for (const char* way : {" ->      ", " <-      "}) {
    for (std::size_t at = said.find(way); at != std::string::npos; at = said.find(way, at + 1))
      ++count;
  }
  return count;
}

std::string residentOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return line.substr(6);
  }
  return "gone";
}

void waitForMessages(Program& program, int wanted) {
  while (messagesIn(program.output()) < wanted)
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

}  // namespace

void measureMemory() {
  const TemporaryFolder folder;
  std::vector<std::string> apps;
  for (const char* name : {"one", "two", "three"}) {
    writeApplication(folder / name, fasterHello(), "<access>led</access>");
    apps.push_back(folder / name);
  }
  RunningFolders run(folder.path(), MORVIK_DEV, apps);
  Browser::shared().driver().open(run.page());
  std::printf("memory of morvik-dev; an hour has %d messages\n", kMessagesOfAnHour);
  for (int look = 0; look <= kHours * kLooksAtAnHour; ++look) {
    waitForMessages(run.program(), look * kMessagesOfAnHour / kLooksAtAnHour);
    std::printf("  after %.1f h: %s\n", static_cast<double>(look) / kLooksAtAnHour,
                residentOf(run.program().pid()).c_str());
    std::fflush(stdout);
  }
}

}  // namespace morvik::test
