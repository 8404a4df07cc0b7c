// A device with its page in a real browser, and applications that are sockets of the test's.
#pragma once

#include <memory>
#include <string>

#include "app-client.h"
#include "browser-fixture.h"
#include "loop.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

/// Each test has a device of its own.
class DevicePageTest : public BrowserTest {
 protected:
  DevicePageTest();

  void openPage() { BrowserTest::openPage(address_); }
  /// One more page, in a window that calls act on from then on.
  void openAnotherPage();

  /// An application with interactive mode, under the id "granted".
  std::unique_ptr<AppClient> application();

  /// Sends a command whose payload is written in protobuf's text form, and gives its id.
  static std::string send(AppClient& app, const std::string& payload);
  /// The same, and waits until it is answered with OK.
  static std::string command(AppClient& app, const std::string& payload);
  /// The next message to the application that has this field, others being passed over.
  static zeph::ZephMsg next(AppClient& app, const std::string& field);

  Loop loop_;
  TemporaryFolder folder_;
  Program device_;
  std::string address_;  // of the page
  std::uint16_t port_ = 0;
};

}  // namespace morvik::test
