// The connection: frames over a socket, and what makes it fail for good.
#include "channel/connection.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

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
void leaveSomeMemory() {
  std::ifstream pages("/proc/self/statm");
  rlim_t size = 0;
  pages >> size;
  const rlim_t limit = size * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (rlim_t{256} << 20);
  const rlimit memory{limit, limit};
  setrlimit(RLIMIT_AS, &memory);
}

TEST_F(FatalConnectionTest, noMemoryForTheLength) {
  stream.write(header(0xffffffff));
  EXPECT_EXIT((leaveSomeMemory(), receive(stream.app())), KilledBySignal(SIGTRAP), kNoPayload);
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

}  // namespace
}  // namespace morvik::test
