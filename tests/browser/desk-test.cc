// The device as a program, and its page in a window.
#include "desk-test.h"

#include <nlohmann/json.hpp>

#include "support/browser/said.h"

namespace morvik::test {

using namespace devkit;
std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

DeskTest::DeskTest()
    : device_({MORVIK_DEV, "device", "--port=0", "--page", "--state=" + folder_.path().string()}),
      address_(test::saidBehind("page: ", device_)),
      port_(static_cast<std::uint16_t>(
          std::stoi(test::saidBehind("listening on 127.0.0.1:", device_)))) {
  window_ = driver_.openWindow();
  driver_.console();  // what older windows said
}

void DeskTest::TearDown() {
  for (const auto& line : driver_.console()) {
    EXPECT_NE(line.at("level"), "SEVERE") << line.dump();
  }
  for (const std::string& window : driver_.windows()) {
    if (window == firstWindow_) continue;
    driver_.switchTo(window);
    driver_.closeWindow();
  }
  driver_.switchTo(firstWindow_);
}

void DeskTest::openPage() {
  driver_.open(address_);
  waitUntilGreeted();
}

std::string DeskTest::openAnotherPage() {
  std::string window = driver_.openWindow();
  openPage();
  return window;
}

void DeskTest::waitUntilGreeted() { expect("document.body.dataset.connection === 'open'"); }

std::unique_ptr<AppClient> DeskTest::application() {
  auto app = std::make_unique<AppClient>(loop_, port_);
  EXPECT_EQ(app->ask(startRequest("granted")).response().code(), zeph::OK);
  return app;
}

}  // namespace morvik::test
