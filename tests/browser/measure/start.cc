// From a command to a lit LED.
#include <chrono>

#include "measures.h"
#include "numbers.h"
#include "support/browser/browser.h"
#include "support/browser/said.h"
#include "support/program.h"

namespace morvik::test {
namespace {

constexpr int kRounds = 10;

double secondsToLight(const std::vector<std::string>& command) {
  WebDriver& driver = Browser::shared().driver();
  driver.open("about:blank");
  const auto begin = std::chrono::steady_clock::now();
  const Program demo(command);
  driver.open(saidBehind("The device is on this page: ", demo));
  driver.waitFor("document.getElementById('led').hasAttribute('data-lit')");
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
  return taken.count();
}

void measureRounds(const std::string& what, const std::vector<std::string>& command) {
  std::vector<double> times;
  for (int i = 0; i < kRounds; ++i) times.push_back(secondsToLight(command));
  printTimes(what, times);
}

}  // namespace

void measureStart() {
  const TemporaryFolder own;
  const std::vector<std::string> demo{"/usr/bin/env", "XDG_STATE_HOME=" + own.path().string(),
                                      SOURCE_DIR "/script/demo", "--app=hello"};
  measureRounds("from script/demo to the lit LED, with its look at what is built", demo);
  std::vector<std::string> direct = demo;
  direct.push_back("--programs=" SOURCE_DIR "/build");
  measureRounds("from script/demo --programs=build to the lit LED", direct);
}

}  // namespace morvik::test
