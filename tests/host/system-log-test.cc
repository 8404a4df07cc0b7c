// Records on their way to the daemon of the system log: their form, their order, and that none is
// late or lost.
#include "host/system-log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/matchers.h"
#include "support/temporary-folder.h"
#include "support/waiting.h"

namespace morvik::test {
namespace {

// The daemon, which hears records one by one.
class LogDaemon {
 public:
  explicit LogDaemon(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    std::filesystem::remove(path);
    EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }

  // The next record, whole, of those that have arrived.
  [[nodiscard]] std::optional<std::string> next() const {
    static std::array<char, 300000> bytes;
    const ssize_t length = recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (length < 0) return std::nullopt;
    return std::string(bytes.data(), static_cast<std::size_t>(length));
  }

  // The texts of all that have arrived, without their heads.
  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    while (const auto record = next()) texts.push_back(record->substr(record->find("]: ") + 3));
    return texts;
  }

 private:
  test::Descriptor socket_;
};

class SystemLogTest : public testing::Test {
 protected:
  SystemLogTest() { openSystemLog(path_.c_str()); }
  ~SystemLogTest() override { closeSystemLog(); }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "log";
  std::unique_ptr<LogDaemon> daemon_ = std::make_unique<LogDaemon>(path_);
};

std::string headOf(std::time_t time, pid_t process) {
  std::array<char, 64> date{};
  std::strftime(date.data(), date.size(), "%b %e %H:%M:%S", std::localtime(&time));
  return std::string(date.data()) + " MorvikVM[" + std::to_string(process) + "]: ";
}

TEST_F(SystemLogTest, aRecordSaysWhenAndWho) {
  const std::time_t before = std::time(nullptr);
  writeRecord(LOG_WARNING, "a text", ", and more");
  const std::time_t after = std::time(nullptr);
  EXPECT_THAT(*daemon_->next(), AnyOf("<140>" + headOf(before, getpid()) + "a text, and more",
                                      "<140>" + headOf(after, getpid()) + "a text, and more"));
  writeRecord(LOG_DEBUG, "");
  EXPECT_THAT(*daemon_->next(), testing::StartsWith("<143>"));
}

TEST_F(SystemLogTest, aRecordGoesOutAtOnce) {
  writeRecord(LOG_DEBUG, "one");
  EXPECT_EQ(daemon_->texts(), std::vector<std::string>{"one"});
  writeRecord(LOG_DEBUG, "two");
  EXPECT_EQ(daemon_->texts(), std::vector<std::string>{"two"});
}

TEST_F(SystemLogTest, heldRecordsGoOutTogetherInTheirOrder) {
  {
    const HeldRecords held;
    writeRecord(LOG_DEBUG, "one");
    {
      const HeldRecords within;
      writeRecord(LOG_DEBUG, "two");
    }
    EXPECT_THAT(daemon_->texts(), testing::IsEmpty());
    sendHeldRecords();
    EXPECT_THAT(daemon_->texts(), ElementsAre("one", "two"));
    sendHeldRecords();
    EXPECT_THAT(daemon_->texts(), testing::IsEmpty());
    writeRecord(LOG_DEBUG, "three");
  }
  EXPECT_THAT(daemon_->texts(), ElementsAre("three"));
}

TEST_F(SystemLogTest, nothingWaitsForScript) {
  const HeldRecords held;
  writeRecord(LOG_DEBUG, "before");
  {
    const PromptRecords prompt;
    EXPECT_THAT(daemon_->texts(), ElementsAre("before"));
    writeRecord(LOG_DEBUG, "within");
    EXPECT_THAT(daemon_->texts(), ElementsAre("within"));
    const HeldRecords heldByACall;
    writeRecord(LOG_DEBUG, "call");
    EXPECT_THAT(daemon_->texts(), testing::IsEmpty());
  }
  EXPECT_THAT(daemon_->texts(), ElementsAre("call"));
  writeRecord(LOG_DEBUG, "behind");
  EXPECT_THAT(daemon_->texts(), testing::IsEmpty());
}

// Records that there is no room for any more, and a daemon that is slower than they come.
TEST_F(SystemLogTest, manyRecordsLoseNoneAndKeepTheirOrder) {
  constexpr std::size_t kMany = 200;
  std::vector<std::string> texts;
  std::thread reader([&] {
    while (texts.size() < kMany) std::ranges::copy(daemon_->texts(), std::back_inserter(texts));
  });
  std::vector<std::string> written;
  {
    const HeldRecords held;
    for (std::size_t i = 0; i < kMany; ++i) {
      written.push_back(std::to_string(i) + std::string(i % 7 == 0 ? 20000 : 10, 'x'));
      writeRecord(LOG_DEBUG, written.back());
    }
  }
  reader.join();
  EXPECT_EQ(texts, written);
}

TEST_F(SystemLogTest, aRecordMayBeAsLongAsTold) {
  const std::string text(kMaxRecordSize - 3, 'x');
  const HeldRecords held;
  writeRecord(LOG_DEBUG, std::string(16000, 'y'));
  writeRecord(LOG_DEBUG, text, "end");
  sendHeldRecords();
  EXPECT_THAT(daemon_->texts(), ElementsAre(std::string(16000, 'y'), text + "end"));
}

TEST_F(SystemLogTest, aDaemonThatStartsAnewGetsTheNextRecord) {
  writeRecord(LOG_DEBUG, "one");
  daemon_ = std::make_unique<LogDaemon>(path_);
  writeRecord(LOG_DEBUG, "two");
  EXPECT_THAT(daemon_->texts(), ElementsAre("two"));
}

TEST_F(SystemLogTest, aChildSpeaksInItsOwnName) {
  writeRecord(LOG_DEBUG, "parent");
  EXPECT_THAT(daemon_->texts(), ElementsAre("parent"));
  const pid_t child = fork();
  if (child == 0) {
    writeRecord(LOG_DEBUG, "child");
    _exit(0);
  }
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_THAT(*daemon_->next(), testing::HasSubstr("MorvikVM[" + std::to_string(child) + "]: "));
}

// As where a signal comes while an application waits for the rest of a frame.
TEST_F(SystemLogTest, aSignalsHandlerNeedNotWait) {
  static bool told = false;
  std::signal(SIGUSR1, [](int) {
    const PromptRecords prompt;
    writeRecord(LOG_DEBUG, "handler");
    told = true;
  });
  const HeldRecords held;
  writeRecord(LOG_DEBUG, "before");
  std::raise(SIGUSR1);
  std::signal(SIGUSR1, SIG_DFL);
  EXPECT_TRUE(told);
  EXPECT_THAT(daemon_->texts(), ElementsAre("before", "handler"));
}

// No death test: one would start the fixture anew, with a daemon of its own.
TEST_F(SystemLogTest, anExitSendsWhatIsHeld) {
  const pid_t child = fork();
  if (child == 0) {
    const HeldRecords held;
    writeRecord(LOG_DEBUG, "last words");
    std::exit(3);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WEXITSTATUS(status), 3);
  EXPECT_THAT(daemon_->texts(), ElementsAre("last words"));
}

}  // namespace
}  // namespace morvik::test
