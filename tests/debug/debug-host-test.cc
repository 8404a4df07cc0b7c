// morvikvm-debug by itself: what it shares with the host that ships, and what only it has.
#include <csignal>
#include <regex>
#include <sstream>

#include "debug-client.h"
#include "desk-fixture.h"
#include "support/file-content.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

// The host's own timers, shortened to a hundredth: a tenth of a second for the autokill.
constexpr const char* kShortTimers = "LD_PRELOAD=" SHORT_TIMERS;

// What a sanitizer that is built in must know of such a program. Leaks are not looked for: a
// debugger ends its host in the middle, while the inspector has sessions and the engine all it had.
constexpr const char* kSanitizer = "ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0";

class DebugHost : public DeskTest {
 protected:
  // A launcher for one application, which ends when that has its process.
  void launch(const std::string& script, const std::vector<std::string>& options,
              const char* variable = "NOTHING=") {
    write("app", script);
    std::vector<std::string> command{"/usr/bin/env", kSanitizer, variable, MORVIKVM_DEBUG};
    command.insert(command.end(), options.begin(), options.end());
    command.emplace_back("--app_folder=" + folder_.path().string());
    host_ = std::make_unique<Program>(command);
    host_->say("app plain x\n\n");
  }

  std::unique_ptr<DebugClient> attach() {
    constexpr std::string_view kListening = "debugger: listening on ";
    const std::string said = host_->waitFor(std::string(kListening));
    auto client = std::make_unique<DebugClient>(
        loop_, host_->waitForLine(said.find(kListening) + kListening.size()));
    EXPECT_TRUE(client->isOpen());
    client->enable();
    return client;
  }

  // Lets an application begin that waits for its debugger.
  static void begin(DebugClient& client) {
    client.call("Runtime.runIfWaitingForDebugger");
    client.waitFor("Debugger.paused");
    client.call("Debugger.resume");
  }

  // The application stops at `debugger;`, and time passes.
  void pauseFor(DebugClient& client, std::chrono::milliseconds time) {
    client.waitFor("Debugger.paused");
    const auto end = Clock::now() + time;
    waitUntil("time to pass", [end] { return Clock::now() >= end; });
    EXPECT_EQ(client.evaluate("6 * 7"), 42);
  }

  // It would live on until its autokill.
  void endApplication(DebugClient& client) {
    client.post("Runtime.evaluate", {{"expression", "exit()"}});
    EXPECT_EQ(client.closeCode(), 1001);
  }

  std::unique_ptr<Program> host_;
};

TEST_F(DebugHost, isNotEndedByTimeInAPause) {
  launch("setTimeout(1, function () { debugger; log('goes on'); });", {"--inspect-brk=0"},
         kShortTimers);
  const auto client = attach();
  begin(*client);
  pauseFor(*client, std::chrono::milliseconds(150));
  EXPECT_THAT(host_->output(), Not(HasSubstr("AUTOKILL")));
  client->call("Debugger.resume");
  host_->waitFor("goes on");
  host_->waitFor("/!\\ AUTOKILL");
}

// What a debugger evaluates may come upon a breakpoint, before there is any script.
TEST_F(DebugHost, canBePausedWhileItWaits) {
  launch("log('here');", {"--inspect-brk=0"});
  const auto client = attach();
  client->post("Runtime.evaluate", {{"expression", "debugger; 1"}});
  client->waitFor("Debugger.paused");
  client->call("Debugger.resume");
  begin(*client);
  host_->waitFor("JSLOG: here");
  endApplication(*client);
}

// Beside what it says of a debugger.
TEST_F(DebugHost, saysWhatTheHostSays) {
  launch("log('here');", {"--inspect-brk=0"});
  const auto client = attach();
  begin(*client);
  host_->waitFor("JSLOG: here");
  endApplication(*client);
  std::istringstream lines(host_->output());
  constexpr const char* kKnown =
      "MESSAGE: (MorvikVM |params: |nbChild |decriptor loaded|debugger: |running app: app|JSLOG: )|"
      "DEBUG: (setCmdLine|APP NAME|LAUNCH_TYPE|INSTANCE_NAME|running app|searching|loading|EXIT)|"
      "WARNING: no params| : len:";
  for (std::string line; std::getline(lines, line);) EXPECT_THAT(line, ContainsRegex(kKnown));
}

// A timer that was due within the pause comes after one that begins behind it and is shorter.
TEST_F(DebugHost, countsNoTimeThatPassesInAPause) {
  launch(
      "setTimeout(400, function () { log('the long one'); exit(); });\n"
      "setTimeout(1, function () {\n"
      "  debugger;\n"
      "  setTimeout(1, function () { log('the short one'); });\n"
      "});",
      {"--inspect-brk=0"});
  const auto client = attach();
  begin(*client);
  pauseFor(*client, std::chrono::milliseconds(450));
  client->call("Debugger.resume");
  EXPECT_THAT(host_->waitFor("the long one"), HasSubstr("the short one"));
}

TEST_F(DebugHost, isAnOrdinaryHostWithoutItsOptions) {
  launch("console.log('mute'); log('here'); exit(); setTimeout(1, exit);", {});
  EXPECT_EQ(host_->waitForEnd(), 0);
  EXPECT_THAT(host_->output(), HasSubstr("JSLOG: here"));
  EXPECT_THAT(host_->output(), Not(AnyOf(HasSubstr("mute"), HasSubstr("debugger: "))));
}

TEST_F(DebugHost, refusesOptionsThatMakeNoSense) {
  const ProgramResult outcome = run({MORVIKVM_DEBUG, "--inspect=here"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "morvikvm-debug: --inspect=here: a port is a number from 0 to 65535\n");
}

TEST_F(DebugHost, answersMessagesThatMakeNoSense) {
  launch("setTimeout(1, function () { return true; });", {"--inspect=0"});
  const auto client = attach();
  for (const std::string& text :
       {std::string(), std::string("{"), std::string("[]"), std::string("null"),
        std::string(2000, '['), std::string(R"({"id":"x"})"), std::string(R"({"id":1})"),
        std::string(R"({"id":1,"method":"No.such"})"), std::string(R"({"id":2,"method":7})")}) {
    client->sendText(text);
  }
  EXPECT_EQ(client->evaluate("1 + 1"), 2);
  endApplication(*client);
}

// An application that writes to a server that has gone ends by this signal.
TEST_F(DebugHost, leavesTheSignalsAsTheyAre) {
  launch("log('here'); setTimeout(1, function () { return true; });", {"--inspect=0"});
  const auto client = attach();
  host_->waitFor("JSLOG: here");
  // Its launcher's child, as long as that has not ended, and then the test's own.
  int application = getpid();
  for (auto children = childrenOf(application); !children.empty();
       children = childrenOf(application)) {
    application = children.back();
  }
  const std::string status = contentOf("/proc/" + std::to_string(application) + "/status");
  std::smatch mask;
  ASSERT_TRUE(std::regex_search(status, mask, std::regex("SigIgn:\\s*([0-9a-f]+)")));
  EXPECT_EQ(std::stoull(mask[1], nullptr, 16) >> (SIGPIPE - 1U) & 1U, 0U) << status;
  EXPECT_THAT(status, HasSubstr("Threads:\t2"));
  endApplication(*client);
}

std::string symbolsOf(const char* program) {
  const ProgramResult symbols = run({"/usr/bin/nm", "--demangle", program});
  EXPECT_EQ(symbols.status, 0) << symbols.output;
  return symbols.output;
}

std::string librariesOf(const char* program) {
  return run({"/usr/bin/objdump", "--private-headers", program}).output;
}

TEST(DebugSymbols, stayOutOfTheHostThatShips) {
  const std::string shipped = symbolsOf(MORVIKVM);
  EXPECT_THAT(shipped, HasSubstr("morvik::runLauncher"));
  for (const char* text : {"v8_inspector", "morvik::devkit", "soup_", "clock_gettime", "__wrap_"}) {
    EXPECT_THAT(shipped, Not(HasSubstr(text)));
  }
  EXPECT_THAT(librariesOf(MORVIKVM), AllOf(HasSubstr("libnode"), Not(HasSubstr("libsoup"))));
  const std::string debug = symbolsOf(MORVIKVM_DEBUG);
  for (const char* text : {"v8_inspector::V8Inspector::create", "morvik::devkit::DebugServer",
                           "soup_server_listen", "T clock_gettime", "morvik::runLauncher"}) {
    EXPECT_THAT(debug, HasSubstr(text));
  }
  EXPECT_THAT(librariesOf(MORVIKVM_DEBUG), HasSubstr("libsoup"));
}

}  // namespace
}  // namespace morvik::test
