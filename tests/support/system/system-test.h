// Fixtures of the system tests: a folder of applications, the real host, and a device server, so
// that a test reads as a conversation. The whole log is printed when a test fails.
#pragma once

#include <signal.h>
#include <syslog.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/fresh-id.h"
#include "support/matchers.h"
#include "support/system/app-folder.h"
#include "support/system/host-process.h"
#include "support/system/test-device.h"

namespace morvik::test {

// One running application. The host must outlive it.
class App {
 public:
  App() = default;
  App(HostProcess& host, pid_t pid) : host_(&host), pid_(pid) {}

  [[nodiscard]] pid_t pid() const { return pid_; }

  // The next text that the script gave to log().
  std::string logged();
  // The next so many of them.
  std::vector<std::string> logged(int count);
  // The next ones, up to the one that says `end`, without it.
  std::vector<std::string> loggedUntil(std::string_view end);

  LogRecord waitForLog(std::string_view text) const { return host_->waitForLog(text, pid_); }
  LogRecord waitForLogTimes(std::string_view text, int times) const {
    return host_->waitForLogTimes(text, times, pid_);
  }
  LogRecord waitForLogThatStarts(std::string_view beginning) const;
  // All texts of the process so far, addresses and fresh ids shown as "%p" and "%id".
  [[nodiscard]] std::vector<std::string> texts() const;
  [[nodiscard]] std::vector<LogRecord> records() const;
  [[nodiscard]] std::vector<std::string> warnings() const;
  [[nodiscard]] bool alive() const { return HostProcess::alive(pid_); }
  void waitUntilEnded() const { HostProcess::waitUntilEnded(pid_); }

 private:
  HostProcess* host_ = nullptr;
  pid_t pid_ = -1;
  int heard_ = 0;
};

// The text with addresses and fresh ids shown as "%p" and "%id".
std::string withoutAddresses(const std::string& text);

// An application that has connected and asked for interactive mode. Its script goes on when that is
// granted.
struct Guest {
  App app;
  DeviceLink device;
  zeph::ZephMsg start;
  void grant() { device.grant(start); }
};

// What every application without a config.bin is warned of, and what ends one that does not become
// interactive.
constexpr char kNoParams[] = "no params loaded: No such file or directory";
constexpr char kAutokill[] = "/!\\ AUTOKILL, application still not interactive after 10000ms";

class SystemTest : public testing::Test {
 protected:
  /// Skips the test where the host can have no log of its own.
  void SetUp() override;
  void TearDown() override;

  // The host; started with the usual options when no test step has started it yet.
  HostProcess& host();
  // Starts the host on the test's folder, unless the options name another.
  HostProcess& startHost(HostOptions options = {});

  // Gives the host a launch line and waits until its application's process is there.
  App launch(const std::string& line);
  // Makes an application with a name of its own from a script, and launches it. The script finds
  // HOST and PORT of the server, and caught(f), which tells how a call of f threw.
  App run(std::string_view script, const std::vector<std::string>& accesses = {"led"});
  [[nodiscard]] std::string prelude() const;
  // Launches an application that does `onGrant` when it is granted interactive mode.
  Guest invite(std::string_view onGrant, const std::vector<std::string>& accesses = {"led"});
  // Waits until the launcher has reaped an application, and so many are left.
  LogRecord waitUntilReaped(const App& app, int left);

  // The exit status of an application, which ends when `cause` has run. The launcher is stopped
  // before, so that it cannot reap the application.
  template <class Cause>
  Exit endOf(const App& app, Cause cause) {
    host().leaveApps();
    cause();
    return HostProcess::waitForExit(app.pid());
  }

  // What the script makes of each expression: log(expression), one after the other.
  struct Row {
    std::string expression;
    std::string logged;
  };
  void expectLogged(const std::vector<Row>& rows, const std::vector<std::string>& accesses = {});
  // What each call throws, as its type and text; "nothing" for one that does not.
  struct Call {
    std::string call;
    std::string thrown;
  };
  void expectThrown(const std::vector<Call>& calls);
  void expectThrown(const std::vector<std::string>& calls, const std::string& thrown);

  AppFolder apps;
  TestDevice server;

 private:
  std::unique_ptr<HostProcess> host_;
  std::set<pid_t> known_;
  int runs_ = 0;
};

// One application that is connected to the device.
class DeviceTest : public SystemTest {
 protected:
  // Runs the script behind a connect; `device` is the connection.
  void connect(std::string_view script, const std::vector<std::string>& accesses = {"led"});
  // Runs the script when interactive mode is granted, and grants it.
  void interactive(std::string_view script, const std::vector<std::string>& accesses = {"led"});
  // Runs a script as run() does, whose next text is "end".
  void runToEnd(std::string_view script);
  // The next message is a request in interactive mode: a fresh id, the interactive id, and this
  // payload in text form, and nothing else.
  void expectRequest(const std::string& payload);
  // Waits for a request of the application and answers it.
  zeph::ZephMsg receiveAndReply(std::string_view code = "OK");

  App app;
  DeviceLink device;
  std::string interactiveId;
};

// Every code that a device can answer.
extern const std::vector<std::string> kCodes;

}  // namespace morvik::test
