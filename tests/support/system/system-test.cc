#include "support/system/system-test.h"

#include <regex.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include "support/machine.h"

namespace morvik::test {
namespace {

constexpr std::string_view kJsLog = "JSLOG: ";
constexpr std::string_view kFolderOption = "--app_folder=";

// An extended regular expression of the system's.
class Pattern {
 public:
  explicit Pattern(const std::string& expression) {
    if (regcomp(&compiled_, expression.c_str(), REG_EXTENDED) != 0)
      throw std::runtime_error("not a pattern: " + expression);
  }
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern() { regfree(&compiled_); }

  [[nodiscard]] std::string replacedIn(std::string text, std::string_view by) const {
    regmatch_t match{};
    for (std::size_t from = 0; regexec(&compiled_, text.c_str() + from, 1, &match, 0) == 0;) {
      const auto begin = from + static_cast<std::size_t>(match.rm_so);
      text.replace(begin, static_cast<std::size_t>(match.rm_eo - match.rm_so), by);
      from = begin + by.size();
    }
    return text;
  }

 private:
  regex_t compiled_{};
};

}  // namespace

const std::vector<std::string> kCodes{
    "OK",           "ERROR", "TIMEOUT",           "TERMINATED",
    "CANCELLED",    "BUSY",  "BAD_INTERACTIVEID", "SCHEDULE_EVENT",
    "NOT_CONNECTED"};

std::string withoutAddresses(const std::string& text) {
  static const Pattern kAddress("0x[0-9a-f]+|\\(nil\\)");
  static const Pattern kId(kUuid);
  return kId.replacedIn(kAddress.replacedIn(text, "%p"), "%id");
}

std::string App::logged() {
  int seen = 0;
  const auto isNext = [&](const LogRecord& record) {
    if (record.pid == pid_ && record.text.starts_with(kJsLog)) ++seen;
    return seen == heard_ + 1;
  };
  const LogRecord record = host_->waitForLog("something by the script", isNext);
  ++heard_;
  return record.text.substr(kJsLog.size());
}

std::vector<std::string> App::logged(int count) {
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.push_back(logged());
  return texts;
}

std::vector<std::string> App::loggedUntil(std::string_view end) {
  std::vector<std::string> texts;
  for (std::string text = logged(); text != end; text = logged()) texts.push_back(text);
  return texts;
}

LogRecord App::waitForLogThatStarts(std::string_view beginning) const {
  return host_->waitForLog(beginning, [&](const LogRecord& record) {
    return record.pid == pid_ && record.text.starts_with(beginning);
  });
}

std::vector<std::string> App::texts() const {
  std::vector<std::string> texts;
  for (const std::string& text : host_->texts(pid_)) texts.push_back(withoutAddresses(text));
  return texts;
}

std::vector<LogRecord> App::records() const {
  std::vector<LogRecord> records = host_->log();
  std::erase_if(records, [&](const LogRecord& record) { return record.pid != pid_; });
  return records;
}

std::vector<std::string> App::warnings() const {
  std::vector<std::string> texts;
  for (const LogRecord& record : records())
    if (record.priority == LOG_WARNING) texts.push_back(record.text);
  return texts;
}

void SystemTest::SetUp() {
  if (const auto& lack = lackOfMountNamespaces()) GTEST_SKIP() << *lack;
}

void SystemTest::TearDown() {
  if (!HasFailure() || host_ == nullptr) return;
  std::cerr << host_->transcript();
}

HostProcess& SystemTest::host() { return host_ == nullptr ? startHost() : *host_; }

HostProcess& SystemTest::startHost(HostOptions options) {
  const auto namesFolder = [](const std::string& argument) {
    return argument.starts_with(kFolderOption);
  };
  if (std::ranges::none_of(options.arguments, namesFolder) && !namesFolder(options.programName))
    options.arguments.push_back(std::string(kFolderOption) + apps.path());
  host_ = std::make_unique<HostProcess>(options);
  return *host_;
}

App SystemTest::launch(const std::string& line) {
  host().line(line);
  const std::string text = "running app: " + apps.path() + "/" + line.substr(0, line.find(' '));
  const LogRecord record = host().waitForLog(text, [&](const LogRecord& candidate) {
    return candidate.text == text && !known_.contains(candidate.pid);
  });
  known_.insert(record.pid);
  return {host(), record.pid};
}

App SystemTest::run(std::string_view script, const std::vector<std::string>& accesses) {
  const std::string name = "app" + std::to_string(++runs_);
  apps.app(name, accesses, prelude() + std::string(script));
  return launch(name);
}

Guest SystemTest::invite(std::string_view onGrant, const std::vector<std::string>& accesses) {
  const std::string script = "morvik.connect(HOST, PORT); morvik.start(function() { ";
  Guest guest{run(script + std::string(onGrant) + " }, {});", accesses), server.accept(), {}};
  guest.start = guest.device.receive();
  return guest;
}

LogRecord SystemTest::waitUntilReaped(const App& app, int left) {
  return host().waitForLog(
      "end process: " + std::to_string(app.pid()) + " nbChild " + std::to_string(left),
      host().pid());
}

// On one line with the script's beginning, so that its lines keep their numbers.
std::string SystemTest::prelude() const {
  return "const HOST = '127.0.0.1', PORT = " + std::to_string(server.port()) +
         "; function caught(f) { try { f(); return 'nothing'; }"
         " catch (e) { return typeof e + ': ' + String(e); } } ";
}

void SystemTest::expectLogged(const std::vector<Row>& rows,
                              const std::vector<std::string>& accesses) {
  ASSERT_FALSE(rows.empty());
  std::string script;
  for (const Row& row : rows) script += "\nlog(" + row.expression + ");";
  App app = run(script, accesses);
  for (const Row& row : rows) EXPECT_EQ(app.logged(), row.logged) << row.expression;
}

void SystemTest::expectThrown(const std::vector<Call>& calls) {
  std::vector<Row> rows;
  for (const Call& call : calls)
    rows.push_back({"caught(function() { " + call.call + "; })", call.thrown});
  expectLogged(rows);
}

void SystemTest::expectThrown(const std::vector<std::string>& calls, const std::string& thrown) {
  std::vector<Call> all;
  for (const std::string& call : calls) all.push_back({call, thrown});
  expectThrown(all);
}

void DeviceTest::connect(std::string_view script, const std::vector<std::string>& accesses) {
  app = run("morvik.connect(HOST, PORT); " + std::string(script), accesses);
  device = server.accept();
}

void DeviceTest::interactive(std::string_view script, const std::vector<std::string>& accesses) {
  Guest guest = invite(script, accesses);
  interactiveId = guest.start.interactivemode().interactiveid();
  guest.grant();
  app = guest.app;
  device = std::move(guest.device);
}

void DeviceTest::runToEnd(std::string_view script) {
  app = run(script);
  EXPECT_EQ(app.logged(), "end");
}

void DeviceTest::expectRequest(const std::string& payload) {
  zeph::ZephMsg sent = device.receive();
  EXPECT_THAT(sent.id(), testing::MatchesRegex(kUuid));
  sent.clear_id();
  EXPECT_EQ(sent.ShortDebugString(), "interactiveId: \"" + interactiveId + "\" " + payload);
}

zeph::ZephMsg DeviceTest::receiveAndReply(std::string_view code) {
  zeph::ZephMsg request = device.receive();
  device.reply(request, code);
  return request;
}

}  // namespace morvik::test
