// A device server that goes, at every byte of a frame and in both directions, and the lengths that
// it may announce: how the process ends that stood on the other end, and what it still says.
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <ostream>

#include "channel/connection.h"
#include "support/matchers.h"
#include "support/text-message.h"
#include "support/unit/frames.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

// How a process ended, and the last line of its log.
struct LastWords {
  int signal = 0;  // 0: it came to the end of what it had to do
  std::string line;
  bool operator==(const LastWords&) const = default;
};

void PrintTo(const LastWords& words, std::ostream* stream) {
  *stream << "signal " << words.signal << ", \"" << words.line << '"';
}

const LastWords kNoLength{SIGTRAP, "ERROR Failed to receive bytes length from server"};
const LastWords kNoPayload{SIGTRAP, "ERROR Failed to receive bytes from server"};

std::string lastLineOf(int file) {
  std::string text(1 << 20, '\0');
  const ssize_t length = pread(file, text.data(), text.size(), 0);
  text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  if (text.ends_with('\n')) text.pop_back();
  return text.substr(text.rfind('\n') + 1);
}

// An application's end of a socket in a process of its own. The engine does not stand in it, so it
// is a fork, and a row costs a millisecond.
class Peer {
 public:
  explicit Peer(const std::function<void(int socket)>& application)
      : log_(memfd_create("log", MFD_CLOEXEC)) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    server_ = ends[1];
    process_ = fork();
    if (process_ == 0) {
      close(ends[1]);
      dup2(log_, STDERR_FILENO);
      printLog();
      application(ends[0]);
      _exit(0);
    }
    close(ends[0]);
  }
  ~Peer() { close(log_); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  void write(const std::string& bytes) const {
    EXPECT_EQ(send(server_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  void read(std::size_t count) const {
    std::string bytes(count, '\0');
    if (count == 0) return;
    EXPECT_EQ(recv(server_, bytes.data(), count, MSG_WAITALL), static_cast<ssize_t>(count));
  }
  /// The server goes; what its application says last.
  [[nodiscard]] LastWords go() const {
    close(server_);
    int status = 0;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    return {WIFSIGNALED(status) ? WTERMSIG(status) : 0, lastLineOf(log_)};
  }

 private:
  int log_;
  int server_ = -1;
  pid_t process_ = -1;
};

// Reads until it cannot any more.
void receiveForEver(int socket) {
  for (;;) {
    zeph::ZephMsg message;
    if (receiveZephMsg(socket, message) == 0) g_message("took %s", message.id().c_str());
  }
}

std::string wholeFrame() { return frame(wireForm("id: 'a' response { code: OK }")); }

TEST(ConnectionFaultsTest, aServerThatGoesWhileItSendsIsMissedAtEveryByte) {
  const std::string frame = wholeFrame();
  for (std::size_t sent = 0; sent < frame.size(); ++sent) {
    SCOPED_TRACE(sent);
    const Peer peer(receiveForEver);
    peer.write(frame.substr(0, sent));
    EXPECT_EQ(peer.go(), sent < kFrameHeaderSize ? kNoLength : kNoPayload);
  }
}

// What was acknowledged by its last byte is dispatched before the end.
TEST(ConnectionFaultsTest, whatCameWholeIsTakenBeforeTheEnd) {
  const std::string frame = wholeFrame();
  for (std::size_t more = 0; more < frame.size(); ++more) {
    SCOPED_TRACE(more);
    int taken = 0;
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    const Peer peer([&](int socket) {
      zeph::ZephMsg message;
      while (receiveZephMsg(socket, message) != 0) {
      }
      EXPECT_EQ(write(report[1], "1", 1), 1);
      receiveForEver(socket);
    });
    peer.write(frame + frame.substr(0, more));
    EXPECT_EQ(peer.go(), more < kFrameHeaderSize ? kNoLength : kNoPayload);
    close(report[1]);
    for (char one = 0; read(report[0], &one, 1) == 1;) ++taken;
    close(report[0]);
    EXPECT_EQ(taken, 1);
  }
}

TEST(ConnectionFaultsTest, aServerThatGoesBehindALength) {
  const struct {
    std::uint32_t length;
    LastWords words;
  } rows[] = {{0, kNoLength},  // an empty message, and then nothing
              {1, kNoPayload},
              {0x7fffffff, kNoPayload},
              {0x80000000, kNoPayload},
              {0xffffffff, kNoPayload}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.length);
    const Peer peer(receiveForEver);
    peer.write(header(row.length));
    EXPECT_EQ(peer.go(), row.words);
  }
}

// A frame that the socket does not take at once: the application stands in the middle of it.
TEST(ConnectionFaultsTest, aServerThatGoesWhileItReadsEndsTheSenderAtEveryByte) {
  const auto sendMuch = [](int socket) {
    zeph::ZephMsg message;
    message.set_id(std::string(4 << 20, 'x'));
    sendZephMsg(socket, message);
  };
  for (const std::size_t taken : {0U, 1U, 2U, 3U, 4U, 5U, 8U, 100U, 65536U, 1048576U}) {
    SCOPED_TRACE(taken);
    const Peer peer(sendMuch);
    peer.read(taken);
    EXPECT_EQ(peer.go().signal, SIGPIPE);
  }
}

}  // namespace
}  // namespace morvik::test
