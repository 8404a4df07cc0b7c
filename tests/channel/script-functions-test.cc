// What scripts call of the channel: morvik.connect. Ping and info stand in device-info-test.cc,
// start in interactive-mode-test.cc.
#include "channel/script-functions.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "channel/connection.h"
#include "support/text-message.h"
#include "support/unit/frames.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

// A device server's door on the loopback interface.
class Door {
 public:
  explicit Door(bool listens = true) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket_, plain, size) != 0 || getsockname(socket_, plain, &size) != 0) abort();
    if (listens && listen(socket_, 16) != 0) abort();
    port = ntohs(address.sin_port);
  }
  ~Door() { close(socket_); }
  Door(const Door&) = delete;
  Door& operator=(const Door&) = delete;

  [[nodiscard]] int accept() const { return ::accept(socket_, nullptr, nullptr); }

  int port = 0;

 private:
  int socket_;
};

class ConnectTest : public ScriptTest {
 protected:
  ConnectTest() : fixtureSocket_(instance.socket) { instance.socket = -1; }
  ~ConnectTest() override {
    removePumps();
    if (instance.socket != -1) close(instance.socket);
    instance.socket = fixtureSocket_;
  }

  std::string connect(const std::string& arguments) {
    return run("morvik.connect(" + arguments + ")");
  }

  std::string connectTo(int port) { return connect("'127.0.0.1', " + std::to_string(port)); }

  int removePumps() {
    int count = 0;
    while (g_source_remove_by_user_data(&instance)) ++count;
    return count;
  }

 private:
  int fixtureSocket_;
};

TEST_F(ConnectTest, wrongArgumentsAreRefusedWithoutAWord) {
  const char* const wrong[] = {
      "",
      "'127.0.0.1'",
      "'h', 1.5",
      "'h', '1'",
      "'h', NaN",
      "'h', 2147483648",
      "'h', undefined",
      "1, 2",
      "null, 2",
      "new String('h'), 2",
      "'h', new Number(2)",
      "'h', 2, {}",
      "'h', 2, []",
      "'h', 2, function() {}",
      "'h', 2, new String('x')",
      "'h', 2, 1, 1",
      "'h', 2, undefined, undefined",
  };
  for (const char* arguments : wrong) {
    EXPECT_EQ(connect(arguments), "throws: Wrong arguments") << arguments;
  }
  EXPECT_EQ(run("try { morvik.connect(); } catch (e) { typeof e; }"), "string");
  EXPECT_THAT(log.texts(), ElementsAre());
  EXPECT_EQ(instance.socket, -1);
  EXPECT_EQ(removePumps(), 0);
}

TEST_F(ConnectTest, aThirdArgumentThatIsNoObjectConnects) {
  const Door door;
  for (const char* third : {"1", "'x'", "true", "null", "undefined", "Symbol()"}) {
    EXPECT_EQ(connect("'127.0.0.1', " + std::to_string(door.port) + ", " + third), "undefined")
        << third;
    close(std::exchange(instance.socket, -1));
    EXPECT_EQ(removePumps(), 1) << third;
  }
}

TEST_F(ConnectTest, connectingStoresTheSocketAndAddsThePump) {
  const Door door;
  EXPECT_EQ(connectTo(door.port), "undefined");
  EXPECT_GE(instance.socket, 0);
  EXPECT_THAT(levelled(log.lines()),
              ElementsAre("DEBUG connecting to: 127.0.0.1:" + std::to_string(door.port)));
  GSource* pump = g_main_context_find_source_by_user_data(nullptr, &instance);
  ASSERT_NE(pump, nullptr);
  EXPECT_EQ(g_source_get_priority(pump), G_PRIORITY_DEFAULT_IDLE);
  EXPECT_EQ(removePumps(), 1);
}

// The value of a socket option, as an int.
int option(int socket, int level, int name) {
  int value = -1;
  socklen_t size = sizeof value;
  EXPECT_EQ(getsockopt(socket, level, name, &value, &size), 0);
  return value;
}

TEST_F(ConnectTest, theSocketKeepsTheSystemsDefaults) {
  const Door door;
  connectTo(door.port);
  const int plain = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(fcntl(instance.socket, F_GETFL) & O_NONBLOCK, 0);
  const std::pair<int, int> unchanged[] = {{IPPROTO_TCP, TCP_NODELAY},
                                           {SOL_SOCKET, SO_KEEPALIVE},
                                           {SOL_SOCKET, SO_RCVTIMEO},
                                           {SOL_SOCKET, SO_SNDTIMEO},
                                           {SOL_SOCKET, SO_LINGER}};
  for (const auto& [level, name] : unchanged) {
    EXPECT_EQ(option(instance.socket, level, name), option(plain, level, name)) << name;
  }
  close(plain);
  removePumps();
}

TEST_F(ConnectTest, aNameIsLookedUp) {
  const Door door;
  EXPECT_EQ(connect("'localhost', " + std::to_string(door.port)), "undefined");
}

TEST_F(ConnectTest, onlyThePortsLowSixteenBitsCount) {
  const Door door;
  for (const int port : {door.port + 65536, door.port - 65536}) {
    log.clear();
    EXPECT_EQ(connectTo(port), "undefined");
    EXPECT_THAT(levelled(log.lines()),
                ElementsAre("DEBUG connecting to: 127.0.0.1:" + std::to_string(port)));
    close(instance.socket);
  }
  instance.socket = -1;
}

struct Refusal {
  std::string arguments;
  std::vector<std::string> log;
};

TEST_F(ConnectTest, aFailureIsThrownAndChangesNothing) {
  const Door closed(false);
  const std::string port = std::to_string(closed.port);
  const std::string wide = std::to_string(closed.port + 65536);
  const Refusal refusals[] = {
      {"'256.1.1.1', 1",
       {"DEBUG connecting to: 256.1.1.1:1", "DEBUG nslookup failed on '256.1.1.1'",
        "WARNING connection refused"}},
      {"'', 1",
       {"DEBUG connecting to: :1", "DEBUG nslookup failed on ''", "WARNING connection refused"}},
      {"'127.0.0.1', " + port,
       {"DEBUG connecting to: 127.0.0.1:" + port,
        "WARNING connect failed on '127.0.0.1:" + port + "' : Connection refused",
        "WARNING connection refused"}},
      {"'127.0.0.1', " + wide,
       {"DEBUG connecting to: 127.0.0.1:" + wide,
        "WARNING connect failed on '127.0.0.1:" + wide + "' : Connection refused",
        "WARNING connection refused"}},
  };
  for (const Refusal& row : refusals) {
    log.clear();
    EXPECT_EQ(connect(row.arguments), "throws: connection refused") << row.arguments;
    EXPECT_EQ(levelled(log.lines()), row.log);
    EXPECT_EQ(instance.socket, -1);
    EXPECT_EQ(removePumps(), 0);
  }
  EXPECT_EQ(run("try { morvik.connect('', 1); } catch (e) { typeof e; }"), "string");
}

TEST_F(ConnectTest, afterAFailureTheScriptMayTryAgain) {
  const Door door;
  EXPECT_EQ(connect("'256.1.1.1', 1"), "throws: connection refused");
  EXPECT_EQ(connectTo(door.port), "undefined");
}

TEST_F(ConnectTest, withoutADescriptorConnectingFailsOfItself) {
  connectTo(1);  // the first name lookup of a process reads files
  log.clear();
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  const rlimit none{0, files.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const std::string result = connectTo(1);
  setrlimit(RLIMIT_NOFILE, &files);
  EXPECT_EQ(result, "throws: connection refused");
  EXPECT_TRUE(
      log.has(G_LOG_LEVEL_WARNING, "connect failed on '127.0.0.1:1' : Bad file descriptor"));
}

TEST_F(ConnectTest, theHostIsReadAsOneByteForEachUnit) {
  EXPECT_EQ(connect("'256.1.1\\u012e1', 1"), "throws: connection refused");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "nslookup failed on '256.1.1.1'"));
}

TEST_F(ConnectTest, aSecondConnectionTakesThePlaceOfTheFirst) {
  const Door first;
  const Door second;
  connectTo(first.port);
  const int firstSocket = instance.socket;
  const int firstServer = first.accept();
  connectTo(second.port);
  EXPECT_NE(instance.socket, firstSocket);
  log.clear();
  const std::string bytes = frame(wireForm("id: 'i'"));
  ASSERT_EQ(send(firstServer, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  for (int turn = 0; turn < 4; ++turn) g_main_context_iteration(nullptr, FALSE);
  EXPECT_THAT(log.texts(), ElementsAre());  // the first is unread,
  char byte = 0;
  EXPECT_EQ(recv(firstServer, &byte, 1, MSG_DONTWAIT), -1);
  EXPECT_EQ(errno, EAGAIN);  // and stays open
  EXPECT_EQ(removePumps(), 2);
  close(firstSocket);
  close(firstServer);
}

TEST_F(ConnectTest, theMainLoopPumpsAnswersToTheScript) {
  const Door door;
  connectTo(door.port);
  const int device = door.accept();
  becomeInteractive();
  run("morvik.led.light('red', log)");
  zeph::ZephMsg request;
  ASSERT_EQ(receiveZephMsg(device, request), 0);
  zeph::ZephMsg reply = zephMsg("id: 'reply' response { code: OK }");
  reply.set_correlationid(request.id());
  sendZephMsg(device, reply);
  runLoopUntil([&] { return !logged().empty(); });
  EXPECT_THAT(logged(), ElementsAre("OK"));
  close(device);
}

}  // namespace
}  // namespace morvik::test
