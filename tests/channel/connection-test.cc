// The connection: frames over a socket, what makes it fail for good, the pump, and morvik.connect.
#include "channel/connection.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

#include "channel/pump.h"
#include "support/text-message.h"
#include "support/unit/frames.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using namespace std::string_literals;

// Two ends of a socket. With SOCK_SEQPACKET every piece that is written is read on its own, so a
// test says where a stream is split.
class Ends {
 public:
  explicit Ends(int type) {
    if (socketpair(AF_UNIX, type, 0, ends_) != 0) abort();
  }
  ~Ends() {
    close(ends_[0]);
    close(ends_[1]);
  }
  Ends(const Ends&) = delete;
  Ends& operator=(const Ends&) = delete;

  [[nodiscard]] int app() const { return ends_[0]; }
  [[nodiscard]] int server() const { return ends_[1]; }

  void write(const std::string& bytes) const {
    EXPECT_EQ(::send(server(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  void shutdownServer() const { shutdown(server(), SHUT_RDWR); }

  /// What the server can read now.
  [[nodiscard]] std::string arrived() const {
    std::string bytes(1 << 16, '\0');
    const ssize_t count = recv(server(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

 private:
  int ends_[2]{};
};

class FrameRoadTest : public testing::Test {
 protected:
  CapturedLog log;
  Ends stream{SOCK_STREAM};
  Ends pieces{SOCK_SEQPACKET};
};

// ---- sending

TEST_F(FrameRoadTest, sendingWritesOneFrame) {
  for (const char* text : {"id: 'i'", "id: 'i' led { light { color: 'red' } }"}) {
    EXPECT_EQ(sendZephMsg(stream.app(), zephMsg(text)), 0);
    EXPECT_EQ(stream.arrived(), frame(wireForm(text)));
  }
}

TEST_F(FrameRoadTest, everySentMessageIsLoggedCredentialsIncluded) {
  const zeph::ZephMsg message = zephMsg("id: 'i' social { facebookToken: 'secret' }");
  sendZephMsg(stream.app(), message);
  EXPECT_THAT(
      levelled(log.lines()),
      ElementsAre("DEBUG Sending MSG\nid: \"i\"\nsocial {\n  facebookToken: \"secret\"\n}\n"));
}

TEST_F(FrameRoadTest, aMessageLargerThanTheSocketsBufferIsSentWhole) {
  zeph::ZephMsg message;
  message.set_id("i");
  message.mutable_tts()->set_action(zeph::Tts::START);
  message.mutable_tts()->set_text(std::string(4 << 20, 'x'));
  std::thread sender([&] { sendZephMsg(stream.app(), message); });
  const std::string whole = frame(message.SerializeAsString());
  std::string bytes(whole.size(), '\0');
  EXPECT_EQ(recv(stream.server(), bytes.data(), bytes.size(), MSG_WAITALL),
            static_cast<ssize_t>(whole.size()));
  sender.join();
  EXPECT_TRUE(bytes == whole);  // too long to be printed
}

// ---- receiving

TEST_F(FrameRoadTest, withoutAMessageReceivingAnswersSoAndLogsNothing) {
  zeph::ZephMsg message;
  EXPECT_EQ(receiveZephMsg(stream.app(), message), 1);
  EXPECT_THAT(log.texts(), ElementsAre());
}

// A millisecond, so that the main loop neither spins nor waits for messages alone.
TEST_F(FrameRoadTest, receivingWaitsForAMillisecond) {
  constexpr int kTurns = 20;
  zeph::ZephMsg message;
  const gint64 begun = g_get_monotonic_time();
  for (int turn = 0; turn < kTurns; ++turn) receiveZephMsg(stream.app(), message);
  const gint64 spent = g_get_monotonic_time() - begun;
  EXPECT_GE(spent, kTurns * 1000);
  EXPECT_LT(spent, kTurns * 250000) << "a turn waits for much longer than a millisecond";
}

TEST_F(FrameRoadTest, aFrameInOnePieceIsRead) {
  stream.write(frame(wireForm("id: 'i' response { code: OK }")));
  zeph::ZephMsg message;
  EXPECT_EQ(receiveZephMsg(stream.app(), message), 0);
  EXPECT_EQ(message.ShortDebugString(), "id: \"i\" response { code: OK }");
  EXPECT_THAT(levelled(log.lines()),
              ElementsAre("DEBUG message received",
                          "DEBUG Received MSG\nid: \"i\"\nresponse {\n  code: OK\n}\n"));
}

TEST_F(FrameRoadTest, aReceivedMessageWithCredentialsIsNotLogged) {
  for (const char* text : {"id: 'i' social { facebookToken: 'secret' }", "id: 'i' social { }"}) {
    log.clear();
    stream.write(frame(wireForm(text)));
    zeph::ZephMsg message;
    EXPECT_EQ(receiveZephMsg(stream.app(), message), 0);
    EXPECT_TRUE(message.has_social());
    EXPECT_THAT(levelled(log.lines()), ElementsAre("DEBUG message received"));
  }
}

TEST_F(FrameRoadTest, framesBehindOneAnotherAreReadOneByOne) {
  stream.write(frame(wireForm("id: 'a'")) + frame(wireForm("id: 'b'")));
  for (const char* id : {"a", "b"}) {
    zeph::ZephMsg message;
    EXPECT_EQ(receiveZephMsg(stream.app(), message), 0);
    EXPECT_EQ(message.id(), id);
  }
  zeph::ZephMsg none;
  EXPECT_EQ(receiveZephMsg(stream.app(), none), 1);
}

TEST_F(FrameRoadTest, aPayloadInSinglePiecesIsPutTogether) {
  const std::string payload = wireForm("id: 'i' response { code: OK description: 'done' }");
  pieces.write(header(static_cast<std::uint32_t>(payload.size())));
  for (const char byte : payload) pieces.write(std::string(1, byte));
  zeph::ZephMsg message;
  EXPECT_EQ(receiveZephMsg(pieces.app(), message), 0);
  EXPECT_EQ(message.SerializeAsString(), payload);
}

struct Split {
  std::vector<std::string> pieces;
  std::size_t length;  // what is read of the payload
};

// The length's remaining bytes never reach the word, so it keeps the first piece and zeroes.
TEST_F(FrameRoadTest, aSplitLengthIsNotPutTogether) {
  const Split splits[] = {
      {{"\0\0\1\3"s}, 259},        {{"\0"s, "\0\1\3"s}, 0},           {{"\0\0"s, "\1\3"s}, 0},
      {{"\0\0\1"s, "\3"s}, 256},   {{"\0"s, "\0"s, "\1"s, "\3"s}, 0}, {{"\0"s, "\0\1"s, "\3"s}, 0},
      {{"\0\0\1"s, "\xff"s}, 256}, {{"\0"s, "\xff\xff\xff"s}, 0},
  };
  const std::string payload(259, 'x');
  for (const Split& row : splits) {
    const Ends ends(SOCK_SEQPACKET);
    for (const std::string& piece : row.pieces) ends.write(piece);
    // Bytes of their own, so that what was not read as payload can be counted.
    for (const char byte : payload) ends.write(std::string(1, byte));
    zeph::ZephMsg message;
    EXPECT_EQ(receiveZephMsg(ends.app(), message), 0);
    std::size_t left = 0;
    for (char byte = 0; recv(ends.app(), &byte, 1, MSG_DONTWAIT) == 1;) ++left;
    EXPECT_EQ(payload.size() - left, row.length);
  }
}

TEST_F(FrameRoadTest, aFrameOfLengthZeroIsAnEmptyMessage) {
  stream.write(header(0));
  zeph::ZephMsg message;
  EXPECT_EQ(receiveZephMsg(stream.app(), message), 0);
  EXPECT_EQ(message.ByteSizeLong(), 0U);
  EXPECT_THAT(levelled(log.lines()), ElementsAre("DEBUG message received", "DEBUG Received MSG\n"));
}

TEST_F(FrameRoadTest, aDamagedPayloadGivesWhatWasReadWhole) {
  stream.write(frame(wireForm("correlationId: 'c'") + "\xc2"));
  zeph::ZephMsg message;
  EXPECT_EQ(receiveZephMsg(stream.app(), message), 0);
  EXPECT_EQ(message.ShortDebugString(), "correlationId: \"c\"");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "Received MSG\ncorrelationId: \"c\"\n"));
}

// ---- failures that end the process

class FatalConnectionTest : public FrameRoadTest {
 protected:
  static void receive(int socket) {
    zeph::ZephMsg message;
    receiveZephMsg(socket, message);
  }
};

constexpr const char* kNoSelect = "fatal: Failed to select socket\n";
constexpr const char* kNoLength = "fatal: Failed to receive bytes length from server\n";
constexpr const char* kNoPayload = "fatal: Failed to receive bytes from server\n";

TEST_F(FatalConnectionTest, aSocketThatSelectCannotWaitFor) {
  const int closed = dup(stream.app());
  close(closed);
  for (const int socket : {closed, -1, FD_SETSIZE, FD_SETSIZE + 1000}) {
    EXPECT_EXIT(receive(socket), KilledBySignal(SIGTRAP), kNoSelect) << socket;
  }
}

TEST_F(FatalConnectionTest, theServerGoesBetweenMessages) {
  stream.shutdownServer();
  EXPECT_EXIT(receive(stream.app()), KilledBySignal(SIGTRAP), kNoLength);
}

TEST_F(FatalConnectionTest, theServerGoesInsideALength) {
  stream.write("\0\0"s);
  stream.shutdownServer();
  EXPECT_EXIT(receive(stream.app()), KilledBySignal(SIGTRAP), kNoLength);
}

TEST_F(FatalConnectionTest, theServerGoesInsideAPayload) {
  stream.write(header(3) + "xx");
  stream.shutdownServer();
  EXPECT_EXIT(receive(stream.app()), KilledBySignal(SIGTRAP), kNoPayload);
}

TEST_F(FatalConnectionTest, theLengthCannotBeReceived) {
  const int unconnected = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EXIT(receive(unconnected), KilledBySignal(SIGTRAP), kNoLength);
  close(unconnected);
}

// Leaves the process some memory for the log, but not four gigabytes.
void limitMemory() {
  std::ifstream pages("/proc/self/statm");
  rlim_t size = 0;
  pages >> size;
  const rlim_t limit = size * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (rlim_t{256} << 20);
  const rlimit memory{limit, limit};
  setrlimit(RLIMIT_AS, &memory);
}

TEST_F(FatalConnectionTest, noMemoryForTheLength) {
  stream.write(header(0xffffffff));
  EXPECT_EXIT((limitMemory(), receive(stream.app())), KilledBySignal(SIGTRAP), kNoPayload);
}

// A signal that is caught, again and again.
void interrupt() {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, nullptr);
  const itimerval often{{0, 200}, {0, 200}};
  setitimer(ITIMER_REAL, &often, nullptr);
}

TEST_F(FatalConnectionTest, anInterruptionCountsAsAFailure) {
  EXPECT_EXIT(
      {
        interrupt();
        while (true) receive(stream.app());
      },
      KilledBySignal(SIGTRAP), kNoSelect);
  stream.write("\0"s);
  EXPECT_EXIT((interrupt(), receive(stream.app())), KilledBySignal(SIGTRAP), kNoLength);
  pieces.write(header(2));
  EXPECT_EXIT((interrupt(), receive(pieces.app())), KilledBySignal(SIGTRAP), kNoPayload);
}

TEST_F(FatalConnectionTest, sendingFails) {
  EXPECT_EXIT(sendZephMsg(-1, zephMsg("id: 'i'")), KilledBySignal(SIGTRAP),
              "fatal: send failed: Bad file descriptor\n");
}

TEST_F(FatalConnectionTest, sendingToAServerThatIsGoneEndsByTheSystemsSignal) {
  stream.shutdownServer();
  EXPECT_EXIT(sendZephMsg(stream.app(), zephMsg("id: 'i'")), KilledBySignal(SIGPIPE), "");
}

// ---- morvik.connect and the pump

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

// One turn of the pump on the fixture's socket.
class PumpTest : public ScriptTest {
 protected:
  void write(const std::string& bytes) {
    ASSERT_EQ(::send(server, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }

  [[nodiscard]] std::size_t received() const {
    const auto texts = log.texts();
    return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), "message received"));
  }
};

TEST_F(PumpTest, aTurnTakesOneMessageAtMostAndThePumpStays) {
  write(frame(wireForm("id: 'a'")) + frame(wireForm("id: 'b'")));
  for (const std::size_t count : {1U, 2U, 2U}) {
    EXPECT_TRUE(onSocketIdle(&instance));
    EXPECT_EQ(received(), count);
  }
}

class CountingListener : public ZephMsgListener {
 public:
  explicit CountingListener(std::vector<std::string>& heard) : heard_(heard) {}
  bool onMessage(const zeph::ZephMsg& message) override {
    heard_.push_back(message.ShortDebugString());
    return true;
  }

 private:
  std::vector<std::string>& heard_;
};

TEST_F(PumpTest, whateverWasReadIsDispatched) {
  std::vector<std::string> heard;
  instance.addListener(std::make_unique<CountingListener>(heard));
  const std::string payloads[] = {"", wireForm("ping { }"), wireForm("correlationId: 'c'") + "\xc2",
                                  wireForm("interactiveMode { }")};
  for (const std::string& payload : payloads) {
    write(frame(payload));
    EXPECT_TRUE(onSocketIdle(&instance));
  }
  EXPECT_THAT(heard, ElementsAre("", "ping { }", "correlationId: \"c\""));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
}

}  // namespace
}  // namespace morvik::test
