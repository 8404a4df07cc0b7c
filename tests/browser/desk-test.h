// A device with its page in a real browser, and applications that are sockets of the test's.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "app-client.h"
#include "loop.h"
#include "support/browser/browser.h"
#include "support/browser/child.h"
#include "support/temporary-folder.h"

namespace morvik::test {

/// Each test has a device of its own, and a window of its own in the one browser. Nothing may stand
/// on the browser's console at the end.
class DeskTest : public ::testing::Test {
 protected:
  DeskTest();
  void TearDown() override;

  /// The page of this test, opened and greeted.
  void openPage();
  /// The same in one more window, which calls act on from then on. Gives its handle.
  std::string openAnotherPage();
  void waitUntilGreeted();

  /// An application with interactive mode, under the id "granted".
  std::unique_ptr<AppClient> application();

  /// The page shows what an expression of JavaScript says.
  void expect(const std::string& expression) { driver_.waitFor(expression); }

  test::Browser& browser_ = test::Browser::shared();
  test::WebDriver& driver_ = browser_.driver();
  Loop loop_;
  test::TemporaryFolder folder_;
  test::Child device_;
  std::string address_;  // of the page
  std::uint16_t port_ = 0;
  std::string window_;

 private:
  std::string firstWindow_ = driver_.window();
};

/// A text as an expression of JavaScript.
std::string quoted(const std::string& text);

}  // namespace morvik::test
