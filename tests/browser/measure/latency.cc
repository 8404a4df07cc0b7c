// The LED's way from a script to the page, and the page's weight.
#include <cstdio>
#include <sstream>

#include "measures.h"
#include "numbers.h"
#include "support/browser/browser.h"
#include "support/browser/running-folders.h"

namespace morvik::test {
namespace {

using Json = WebDriver::Json;

// Each change has a colour of its own, and they are too far apart to be shown as one.
constexpr const char* kChanges = R"js(
  var times = [];
  function change() {
    var color = '#ff' + ('000' + times.length.toString(16)).slice(-4);
    times.push(Date.now());
    morvik.led.light(color);
    if (times.length % 40 === 0) log('times ' + times.slice(-40).join(' ') + ' .');
    if (times.length === 400) log('all done');
    else setTimeout(60 + morvik.random() % 60, change);
  }
  morvik.button.addListener(change); // once, when somebody watches
  log('ready');
)js";

// Notes for each colour when it is in the DOM, and when the frame that paints it is over.
constexpr const char* kWatchLed = R"js(
  const led = document.getElementById('led');
  const now = () => performance.timeOrigin + performance.now();
  window.changed = {};
  window.painted = {};
  new MutationObserver(() => {
    const { color } = led.dataset;
    window.changed[color] = now();
    const { port1, port2 } = new MessageChannel();
    port1.onmessage = () => { window.painted[color] = now(); };
    port2.postMessage(null);
  }).observe(led, { attributeFilter: ['data-color'] });
)js";

std::vector<double> calledAt(const std::string& said) {
  std::vector<double> times;
  std::istringstream words(said);
  for (std::string word; words >> word;) {
    if (word != "times") continue;
    while (words >> word && word != ".") times.push_back(std::stod(word));
  }
  return times;
}

std::string colorOf(std::size_t change) {
  char color[8];
  std::snprintf(color, sizeof color, "#ff%04zx", change);
  return color;
}

void report(const std::string& what, const Json& shown, const std::vector<double>& called) {
  std::vector<double> taken;
  for (std::size_t i = 0; i < called.size(); ++i) {
    const auto found = shown.find(colorOf(i));
    if (found != shown.end()) taken.push_back(found->get<double>() - called[i]);
  }
  printTimes(what, taken);
  if (taken.size() < called.size())
    std::printf("  %zu changes were shown together with the next one\n",
                called.size() - taken.size());
}

}  // namespace

void measureLatency() {
  const TemporaryFolder folder;
  writeApplication(folder / "app", interactiveScript(kChanges),
                   "<access>led</access><access>button</access>");
  RunningFolders run(folder.path(), MORVIK_DEV, {folder / "app"});
  WebDriver& driver = Browser::shared().driver();
  driver.open(run.page());
  driver.waitFor("document.body.dataset.connection === 'open'");
  driver.run(kWatchLed);
  run.program().waitFor("log     ready");
  run.program().say("button SIMPLE\n");
  run.program().waitFor("all done");
  const std::vector<double> called = calledAt(run.program().output());
  driver.waitFor("window.painted['" + colorOf(called.size() - 1) + "']");
  report("from the script's call to the DOM", driver.run("return window.changed"), called);
  report("from the script's call to the end of the frame", driver.run("return window.painted"),
         called);
}

void measureWeight() {
  const TemporaryFolder folder;
  writeApplication(folder / "app", interactiveScript(""), "");
  RunningFolders run(folder.path(), MORVIK_DEV, {folder / "app"});
  WebDriver& driver = Browser::shared().driver();
  driver.open(run.page());
  driver.waitFor("document.body.dataset.connection === 'open'");
  const Json weight = driver.run(R"js(
    const all = ['navigation', 'resource'].flatMap((type) => performance.getEntriesByType(type));
    const sum = (name) => all.reduce((bytes, one) => bytes + one[name], 0);
    return { requests: all.length, bytes: sum('encodedBodySize'), transferred: sum('transferSize'),
             ready: Math.max(...all.map((one) => one.responseEnd)) };
  )js");
  std::printf(
      "the page: %d requests and a WebSocket, %d bytes of files, %d with headers; the last "
      "file is there after %.0f ms\n",
      weight["requests"].get<int>(), weight["bytes"].get<int>(), weight["transferred"].get<int>(),
      weight["ready"].get<double>());
  std::fflush(stdout);
}

}  // namespace morvik::test
