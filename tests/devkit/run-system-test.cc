// morvik-dev run and the system around it: the browser, and the system log.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "desk-fixture.h"
#include "pty-program.h"
#include "support/file-content.h"
#include "support/machine.h"
#include "support/matchers.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

// A xdg-open of the test's stands before the system's, and notes what it is to open.
class RunWithBrowser : public DeskTest {
 protected:
  RunWithBrowser() : path_(std::getenv("PATH")) {
    const fs::path opener = folder_ / "bin/xdg-open";
    fs::create_directory(opener.parent_path());
    std::ofstream(opener) << "#!/bin/sh\necho \"$*\" >> " << opened() << '\n';
    fs::permissions(opener, fs::perms::owner_all);
    setenv("PATH", (opener.parent_path().string() + ':' + path_).c_str(), 1);
  }
  ~RunWithBrowser() override { setenv("PATH", path_.c_str(), 1); }

  std::string opened() const { return folder_ / "opened"; }

  // The page's address is behind the mark in what the tool has said.
  void expectOpened(const std::string& said, const std::string& mark) {
    const std::size_t at = said.find(mark) + mark.size();
    const std::string address = said.substr(at, said.find_first_of("\r\n", at) - at);
    EXPECT_THAT(address, StartsWith("http://127.0.0.1:"));
    EXPECT_TRUE(comesTrue([&] {
      return fs::exists(opened()) && contentOf(opened()) == address + '\n';
    })) << contentOf(opened());
    fs::remove(opened());
  }

 private:
  std::string path_;
};

constexpr const char* kGreeting = "The device is on this page: ";

TEST_F(RunWithBrowser, opensThePageWhenItIsAskedTo) {
  const std::string app = write("app", "log('here');");
  Program run({MORVIK_DEV, "run", "--open", app});
  const std::string said = run.waitFor("log     here");
  EXPECT_THAT(said, StartsWith(kGreeting));
  expectOpened(said, kGreeting);
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunWithBrowser, opensThePageAtItsKey) {
  const std::string app = write("app", "log('here');");
  PtyProgram run(loop_, {MORVIK_DEV, "run", app});
  const std::string said = run.waitFor("here");
  EXPECT_FALSE(fs::exists(opened()));
  for (int times = 0; times < 2; ++times) {
    run.press("p");
    expectOpened(said, kGreeting);
  }
  run.press("q");
  EXPECT_EQ(run.waitForEnd(), 0);
}

TEST_F(RunWithBrowser, saysThatThereIsNoPageToOpen) {
  PtyProgram run(loop_, command({write("app", "log('here');")}));
  run.waitFor("here");
  run.press("p");
  run.waitFor("There is no page");
  EXPECT_FALSE(fs::exists(opened()));
  run.press("q");
  EXPECT_EQ(run.waitForEnd(), 0);
}

TEST_F(RunWithBrowser, saysThatNoBrowserOpens) {
  fs::remove(folder_ / "bin/xdg-open");
  setenv("PATH", (folder_ / "bin").c_str(), 1);
  Program run({MORVIK_DEV, "run", "--open", write("app", "log('here');")});
  EXPECT_THAT(run.waitFor("log     here"), HasSubstr("No browser opens ("));
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
}

// In a mount namespace of its own the tool finds a /dev that is a folder of the test's.
class RunBesideSystemLog : public DeskTest {
 protected:
  RunBesideSystemLog() {
    fs::create_directory(devices());
    fs::create_symlink("/proc/self/fd", devices() / "fd");
  }

  void SetUp() override {
    if (const auto& lack = lackOfMountNamespaces()) GTEST_SKIP() << *lack;
  }

  fs::path devices() const { return folder_.path() / "dev"; }
  fs::path log() const { return devices() / "log"; }

  std::vector<std::string> inOwnDevices(const std::vector<std::string>& words) const {
    std::vector<std::string> all{"/usr/bin/unshare",
                                 geteuid() == 0 ? "--mount" : "-rm",
                                 "/bin/sh",
                                 "-ec",
                                 R"sh(for node in null zero full random urandom; do
                                        : > "$0/$node"
                                        mount --bind "/dev/$node" "$0/$node"
                                      done
                                      mount --rbind "$0" /dev
                                      exec "$@")sh",
                                 devices()};
    const std::vector<std::string> tool = command(words);
    all.insert(all.end(), tool.begin(), tool.end());
    return all;
  }
};

sockaddr_un addressAt(const fs::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

class Datagrams {
 public:
  Datagrams() : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const timeval patience{.tv_sec = 30, .tv_usec = 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
  }
  ~Datagrams() { close(fd_); }
  Datagrams(const Datagrams&) = delete;
  Datagrams& operator=(const Datagrams&) = delete;

  [[nodiscard]] bool reach(const fs::path& path) const {
    const sockaddr_un address = addressAt(path);
    return connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  }
  [[nodiscard]] bool listen(const fs::path& path) const {
    const sockaddr_un address = addressAt(path);
    return bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  }
  // Waits for one; empty when none comes in time.
  std::string next() const {
    std::string record(65536, '\0');
    const ssize_t size = recv(fd_, record.data(), record.size(), 0);
    return record.substr(0, size > 0 ? static_cast<std::size_t>(size) : 0);
  }

 private:
  int fd_;
};

TEST_F(RunBesideSystemLog, standsInWhereNobodyListens) {
  Program run(inOwnDevices({write("app", "log('here');")}));
  run.waitFor("log     here");
  EXPECT_TRUE(Datagrams().reach(log())) << "nobody listens at " << log();
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
  EXPECT_FALSE(fs::exists(log()));
}

TEST_F(RunBesideSystemLog, takesThePlaceOfOneThatWasKilled) {
  ASSERT_TRUE(Datagrams().listen(log()));
  EXPECT_FALSE(Datagrams().reach(log()));
  Program run(inOwnDevices({write("app", "log('here');")}));
  run.waitFor("log     here");
  EXPECT_TRUE(Datagrams().reach(log()));
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
}

TEST_F(RunBesideSystemLog, leavesTheSystemsLogAlone) {
  const Datagrams system;
  ASSERT_TRUE(system.listen(log()));
  Program run(inOwnDevices({write("app", "log('here');")}));
  std::string record = system.next();
  while (!record.empty() && record.find("JSLOG: here") == std::string::npos) record = system.next();
  EXPECT_THAT(record, HasSubstr("JSLOG: here"));
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
  EXPECT_TRUE(Datagrams().reach(log()));
}

}  // namespace
}  // namespace morvik::test
