// What goes wrong around an application: its files, descriptors that have run out, signals, a
// server that does not read. It ends or goes on as told, and the launcher and a neighbour never
// mind.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kLeave[] = "log('runs'); setTimeout(0, exit);";
constexpr char kConfig[] = "\x5a\x0a\x0a\x03key\x12\x03val";  // one parameter
constexpr char kNoSuchFile[] = "No such file or directory";

class FaultsTest : public DeviceTest {
 protected:
  // Something lives beside whatever is done to others, and a further application can be launched.
  void SetUp() override { neighbour_ = invite("log('alive');"); }
  void expectOthersLive() {
    neighbour_.grant();
    EXPECT_EQ(neighbour_.app.logged(), "alive");
    EXPECT_EQ(run("log('started');").logged(), "started");
  }

  // A sound application, to be damaged.
  std::filesystem::path soundApp(const std::string& name) {
    apps.app(name, {"led"}, kLeave);
    apps.file(name, "config.bin", kConfig);
    return std::filesystem::path(apps.path()) / name;
  }

  // The last words of an application that has ended.
  std::string lastWords(const App& ended) {
    waitUntilReaped(ended, 1);
    return ended.texts().back();
  }

 private:
  Guest neighbour_;
};

// --- Files

using Damage = std::function<void(const std::filesystem::path& file)>;

void takeAway(const std::filesystem::path& file) { std::filesystem::remove(file); }
void empty(const std::filesystem::path& file) { std::filesystem::resize_file(file, 0); }
void cut(const std::filesystem::path& file) {
  std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
}
// Zeroes of which no disk holds any.
void enlarge(const std::filesystem::path& file) { std::filesystem::resize_file(file, 1 << 28); }
void replaceByFolder(const std::filesystem::path& file) {
  takeAway(file);
  std::filesystem::create_directory(file);
}
void replaceByLoop(const std::filesystem::path& file) {
  takeAway(file);
  std::filesystem::create_symlink(file, file);
}

struct DamagedFile {
  const char* file;
  const char* how;
  Damage damage;
  std::string last;  ///< of the application's log
};

TEST_F(FaultsTest, whatIsWrongWithAFileEndsItsApplicationAsTold) {
  const std::string end = "EXIT";
  const std::string searching = "loading descriptor";
  const std::vector<DamagedFile> rows{
      {"descriptor.xml", "missing", takeAway, searching},
      {"descriptor.xml", "empty", empty, searching},
      {"descriptor.xml", "cut", cut, searching},
      {"descriptor.xml", "huge", enlarge, searching},
      {"descriptor.xml", "a folder", replaceByFolder, searching},
      {"descriptor.xml", "a loop", replaceByLoop, searching},
      {"config.bin", "missing", takeAway, end},
      {"config.bin", "empty", empty, end},
      {"config.bin", "cut", cut, end},
      {"config.bin", "a folder", replaceByFolder, end},
      {"config.bin", "a loop", replaceByLoop, end},
      {"main.js", "missing", takeAway, kNoSuchFile},
      {"main.js", "a folder", replaceByFolder, "Is a directory"},
      {"main.js", "a loop", replaceByLoop, "Too many levels of symbolic links"},
  };
  for (const DamagedFile& row : rows) {
    SCOPED_TRACE(std::string(row.file) + " is " + row.how);
    row.damage(soundApp("app") / row.file);
    EXPECT_EQ(lastWords(launch("app")), row.last);
    std::filesystem::remove_all(std::filesystem::path(apps.path()) / "app");
  }
  expectOthersLive();
}

#ifndef MORVIK_PROGRAMS_ARE_SANITIZED  // there the limit does not hold: the shadow is data too
TEST_F(FaultsTest, aFileThatIsLargerThanTheMemoryEndsItsApplicationAsTold) {
  for (const std::string file : {"config.bin", "main.js"}) {
    SCOPED_TRACE(file);
    enlarge(soundApp("app") / file);
    EXPECT_THAT(lastWords(launch("app")), HasSubstr("script engine out of memory: "));
    std::filesystem::remove_all(std::filesystem::path(apps.path()) / "app");
  }
  expectOthersLive();
}
#endif

// Without a word of its script such an application is there until it is ended for not becoming
// interactive.
TEST_F(FaultsTest, aScriptThatIsEmptyOrCutLeavesItsApplicationThere) {
  const struct {
    std::string source;
    std::string last;  // of what the start tells
  } rows[] = {
      {"", "running app: app"},
      {"log('runs'); function leave() {", "SyntaxError: Unexpected end of input"},
      {"log('runs'); setTimeo", "ReferenceError: setTimeo is not defined\n    at main.js:1:14"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    soundApp("app");
    apps.file("app", "main.js", row.source);
    app = launch("app");
    app.waitForLog(row.last);
    EXPECT_TRUE(app.alive());
    kill(app.pid(), SIGKILL);
    waitUntilReaped(app, 1);
  }
  expectOthersLive();
}

// One that reads a pipe waits for its writer, and nobody else does.
TEST_F(FaultsTest, aPipeInPlaceOfAFileKeepsItsApplicationWaiting) {
  for (const std::string file : {"descriptor.xml", "config.bin", "main.js"}) {
    SCOPED_TRACE(file);
    const std::filesystem::path path = soundApp("waits") / file;
    takeAway(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const App waiting = launch("waits");
    const App other = run(kLeave);
    waitUntilReaped(other, 2);
    EXPECT_TRUE(waiting.alive());
    kill(waiting.pid(), SIGKILL);
    waitUntilReaped(waiting, 1);
    takeAway(path);
  }
  expectOthersLive();
}

// --- Bombs

struct Bomb {
  std::string name;
  std::string descriptor;
  std::string last = "loading descriptor";  ///< of the application's log
};

std::string attributes(int count) {
  std::string text = "<descriptor";
  for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "=''";
  return text + "/>";
}

std::string entities() {
  std::string text = "<!DOCTYPE d [<!ENTITY e0 'lol'>";
  for (int i = 1; i < 12; ++i) {
    text += "<!ENTITY e" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) text += "&e" + std::to_string(i - 1) + ";";
    text += "'>";
  }
  return text + "]><descriptor a='&e11;'/>";
}

std::string nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<a>";
  return text;
}

TEST_F(FaultsTest, aDescriptorThatIsABombEndsItsOwnLaunchAtOnce) {
  const Bomb bombs[] = {
      {"attributes", attributes(60000)},
      {"the most attributes that are read", attributes(6000), "EXIT"},
      {"entities", entities()},
      {"nesting", nested(20000)},
      {"size", "<descriptor>" + std::string(8 << 20, ' ') + "</descriptor>"},
  };
  for (const Bomb& bomb : bombs) {
    SCOPED_TRACE(bomb.name);
    apps.app("bomb", {}, kLeave);
    apps.file("bomb", "descriptor.xml", bomb.descriptor);
    const auto begun = Clock::now();
    EXPECT_EQ(lastWords(launch("bomb")), bomb.last);
    EXPECT_LT(Clock::now() - begun, std::chrono::seconds(10));  // on any machine; one is usual
  }
  expectOthersLive();
}

// --- Descriptors

void limitDescriptors(pid_t process, rlim_t count) {
  const rlimit limit{count, count};
  ASSERT_EQ(prlimit(process, RLIMIT_NOFILE, &limit, nullptr), 0);
}

TEST_F(FaultsTest, anApplicationWithoutDescriptorsIsRefusedAndGoesOn) {
  interactive(
      "ping(function() {"
      "  log(caught(function() { morvik.connect(HOST, PORT); }));"
      "  log(caught(function() { file.read('main.js').text; }).replace(/:.*:/, ':'));"
      "  log(caught(function() { file.write('new.txt', 'x'); }));"
      "  log(http.get('http://127.0.0.1:' + PORT + '/'));"
      "  ping(log); });",
      {"led", "http"});
  const zeph::ZephMsg request = device.receive();
  limitDescriptors(app.pid(), 1);
  device.reply(request, "OK");
  EXPECT_THAT(app.logged(), StartsWith("string: "));
  EXPECT_THAT(app.logged(), StartsWith("string:"));
  EXPECT_EQ(app.logged(), "string: Too many open files");
  EXPECT_EQ(app.logged(), "curl error");
  receiveAndReply("OK");
  EXPECT_EQ(app.logged(), "OK");
  expectOthersLive();
}

// The launcher needs none. What it starts says why it ends.
TEST_F(FaultsTest, aLauncherWithoutDescriptorsLivesOn) {
  soundApp("app");
  rlimit before{};
  ASSERT_EQ(prlimit(host().pid(), RLIMIT_NOFILE, nullptr, &before), 0);
  const rlimit none{1, before.rlim_max};
  ASSERT_EQ(prlimit(host().pid(), RLIMIT_NOFILE, &none, nullptr), 0);
  host().line("app");
  host().waitForLog("why it ends", [](const LogRecord& record) {
    return record.text.find("Too many open files") != std::string::npos;
  });
  host().waitForLog("end process: sigchild", host().pid());
  ASSERT_EQ(prlimit(host().pid(), RLIMIT_NOFILE, &before, nullptr), 0);
  expectOthersLive();
}

// --- Signals

// Nothing that the server sent meanwhile is lost.
TEST_F(FaultsTest, anApplicationThatWasStoppedHearsAllThatCame) {
  constexpr int kMessages = 500;
  interactive(
      "var heard = 0; morvik.button.addListener(function() { ++heard; return true; });"
      "ping(function() { log(heard); });",
      {"button"});
  const zeph::ZephMsg request = device.receive();
  kill(app.pid(), SIGSTOP);
  waitUntil("a stopped application",
            [&] { return HostProcess::statusOf(app.pid(), "State").starts_with("T"); });
  zeph::ZephMsg press = newMessage();
  press.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  for (int i = 0; i < kMessages; ++i) device.send(press);
  device.reply(request, "OK");
  kill(app.pid(), SIGCONT);
  EXPECT_EQ(app.logged(), std::to_string(kMessages));
  expectOthersLive();
}

TEST_F(FaultsTest, applicationsOutliveALauncherThatIsKilled) {
  for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP, SIGSEGV}) {
    SCOPED_TRACE(signal);
    startHost();
    Guest guest = invite("ping(log);");
    kill(host().pid(), signal);
    HostProcess::waitUntilEnded(host().pid());
    guest.grant();
    guest.device.reply(guest.device.receive(), "OK");
    EXPECT_EQ(guest.app.logged(), "OK");
  }
}

// --- A server that does not read

// The application stands still, and everything goes out in its order once the server reads again.
TEST_F(FaultsTest, aServerThatComesBackGetsEverythingInOrder) {
  constexpr int kRequests = 3000;
  interactive("for (let i = 0; i < " + std::to_string(kRequests) +
              "; ++i) morvik.led.light(i + ' ' + 'x'.repeat(4000)); log('all sent');");
  waitUntil("an application that waits for the server", [&] {
    return HostProcess::statusOf(app.pid(), "State").starts_with("S") && !device.quiet();
  });
  EXPECT_EQ(run("log('beside'); setTimeout(0, exit);").logged(), "beside");
  for (int i = 0; i < kRequests; ++i)
    ASSERT_THAT(device.receive().led().light().color(), StartsWith(std::to_string(i) + " "));
  EXPECT_EQ(app.logged(), "all sent");
}

}  // namespace
}  // namespace morvik::test
