// chromedriver and its Chromium.
#include "support/browser/browser.h"

#include <string>

namespace morvik::test {
namespace {

using Json = WebDriver::Json;

// It goes nowhere but to this machine, and does not slow down a window that another one covers.
Json capabilities(const std::string& userFolder) {
  const Json arguments = {"--headless=new",
                          "--no-sandbox",
                          "--disable-gpu",
                          "--disable-quic",
                          "--disable-dev-shm-usage",
                          "--no-first-run",
                          "--no-default-browser-check",
                          "--disable-background-networking",
                          "--disable-component-update",
                          "--disable-sync",
                          "--disable-background-timer-throttling",
                          "--disable-backgrounding-occluded-windows",
                          "--disable-renderer-backgrounding",
                          "--no-proxy-server",
                          "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1",
                          "--user-data-dir=" + userFolder};
  return {{"browserName", "chrome"},
          {"goog:loggingPrefs", {{"browser", "ALL"}}},
          {"goog:chromeOptions", {{"binary", CHROMIUM}, {"args", arguments}}}};
}

// The driver names the port that it took.
std::string addressFrom(const Program& program) {
  const std::string words = "started successfully on port ";
  program.waitFor(words);
  const std::string said = program.waitFor(".\n");
  const std::size_t at = said.find(words) + words.size();
  return "http://127.0.0.1:" + said.substr(at, said.find_first_not_of("0123456789", at) - at);
}

}  // namespace

Browser& Browser::shared() {
  static Browser browser;
  return browser;
}

Browser::Browser()
    : program_({CHROMEDRIVER, "--port=0", "--log-level=SEVERE"}),
      driver_(std::make_unique<WebDriver>(addressFrom(program_), capabilities(user_.path()))) {}

void Browser::show(int width, int height, bool isDark, bool wantsLittleMotion) {
  driver_->inspect(
      "Emulation.setDeviceMetricsOverride",
      {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
  const Json features = {
      {{"name", "prefers-color-scheme"}, {"value", isDark ? "dark" : "light"}},
      {{"name", "prefers-reduced-motion"}, {"value", wantsLittleMotion ? "reduce" : ""}}};
  driver_->inspect("Emulation.setEmulatedMedia", {{"features", features}});
}

}  // namespace morvik::test
