// The connection to the device server: looking up, connecting, and whole frames in both directions.
#include "channel/connection.h"

#include <glib.h>
#include <google/protobuf/text_format.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "channel/frame.h"
#include "channel/message.h"
#include "host/owned.h"
#include "host/system-log.h"

namespace morvik {
namespace {

// What a turn of the main loop waits for a message: the loop never sleeps otherwise, and a timer
// that becomes due meanwhile is no more than this late.
constexpr timeval kPatience = {0, 1000};  // one millisecond

// The first address counts. Blocks the whole application, for as long as the system's resolver
// does.
bool lookUp(const char* host, sockaddr_in& address) {
  const hostent* entry = gethostbyname(host);
  if (entry == nullptr) {
    g_debug("nslookup failed on '%s'", host);
    return false;
  }
  std::memcpy(&address.sin_addr, entry->h_addr_list[0], sizeof address.sin_addr);
  return true;
}

bool establish(int socket, const char* host, std::int32_t port) {
  g_debug("connecting to: %s:%d", host, port);
  sockaddr_in address{};
  if (!lookUp(host, address)) return false;
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));  // the low 16 bits count
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return true;
  }
  g_warning("connect failed on '%s:%d' : %s", host, port, std::strerror(errno));
  return false;
}

// Keeps a text's memory for its next use, unless that was far more than usual: an application's
// memory does not stay at what its largest message took.
class BoundedReuse {
 public:
  explicit BoundedReuse(std::string& text) : text_(text) {}
  ~BoundedReuse() {
    if (text_.capacity() > kUsual) text_ = std::string();
  }
  BoundedReuse(const BoundedReuse&) = delete;
  BoundedReuse& operator=(const BoundedReuse&) = delete;

 private:
  static constexpr std::size_t kUsual = 16384;
  std::string& text_;
};

// Writes a message for the log, as its DebugString does.
class LogText {
 public:
  explicit LogText(const zeph::ZephMsg& message) {
    static const google::protobuf::TextFormat::Printer& printer = printerKeptForLife();
    printer.PrintToString(message, &text_);
  }
  [[nodiscard]] const char* get() const { return text_.c_str(); }

 private:
  static const google::protobuf::TextFormat::Printer& printerKeptForLife() {
    static auto& printer = *new google::protobuf::TextFormat::Printer;
    printer.SetExpandAny(true);
    return printer;
  }
  static std::string text_;
  BoundedReuse reuse_{text_};
};
std::string LogText::text_;

// Towards a server that has gone, SIGPIPE ends the application without a word; this line is for all
// other failures. The log has the message before the server does.
void sendAll(int socket, const unsigned char* bytes, std::size_t length) {
  sendHeldRecords();
  for (std::size_t sent = 0; sent < length;) {
    const ssize_t taken = send(socket, bytes + sent, length - sent, 0);
    if (taken == -1) g_error("send failed: %s", std::strerror(errno));
    sent += static_cast<std::size_t>(taken);
  }
}

bool messageWaits(int socket) {
  // A descriptor outside select's set cannot be waited for.
  if (socket < 0 || socket >= FD_SETSIZE) g_error("Failed to select socket");
  fd_set set;
  FD_ZERO(&set);
  FD_SET(socket, &set);
  timeval timeout = kPatience;
  if (select(socket + 1, &set, nullptr, nullptr, &timeout) < 0) g_error("Failed to select socket");
  return FD_ISSET(socket, &set) != 0;
}

// What has come from the socket and was not asked for yet: several messages that wait are taken
// from the system at once. It answers as the socket itself would.
class Incoming {
 public:
  // For this socket from now on. What had come from another one is never read.
  void attend(int socket) {
    if (socket != socket_) begin_ = end_ = 0;
    socket_ = socket;
  }

  [[nodiscard]] bool isEmpty() const { return begin_ == end_; }

  // As recv: some bytes of those that are there, all of them if they are no more than `length`;
  // waits when there are none.
  ssize_t receive(unsigned char* bytes, std::size_t length) {
    if (isEmpty() && length >= bytes_.size()) return receiveOrWait(bytes, length);
    if (isEmpty()) {
      const ssize_t got = receiveOrWait(bytes_.data(), bytes_.size());
      if (got < 1) return got;
      begin_ = 0;
      end_ = static_cast<std::size_t>(got);
    } else if (end_ - begin_ < length) {
      topUp();
    }
    return take(bytes, length);
  }

 private:
  [[nodiscard]] ssize_t receiveOrWait(unsigned char* bytes, std::size_t length) const {
    const ssize_t got = recv(socket_, bytes, length, MSG_DONTWAIT);
    if (got >= 0 || errno != EAGAIN) return got;
    sendHeldRecords();
    return recv(socket_, bytes, length, 0);
  }

  // A length that lies whole in the system is not taken for a split one.
  void topUp() {
    std::copy(bytes_.begin() + begin_, bytes_.begin() + end_, bytes_.begin());
    end_ -= std::exchange(begin_, 0);
    const ssize_t got = recv(socket_, bytes_.data() + end_, bytes_.size() - end_, MSG_DONTWAIT);
    if (got > 0) end_ += static_cast<std::size_t>(got);
  }

  ssize_t take(unsigned char* bytes, std::size_t length) {
    const std::size_t count = std::min(length, end_ - begin_);
    std::memcpy(bytes, bytes_.data() + begin_, count);
    begin_ += count;
    return static_cast<ssize_t>(count);
  }

  std::array<unsigned char, 16384> bytes_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  int socket_ = -1;
};

Incoming incoming;

std::uint32_t receiveLength() {
  // The write position moves a whole word for every byte received, on purpose: a length in one
  // piece is read correctly, a split one is not put together. What a server sees that splits it is
  // an application that waits for a frame of another length, or ends. Zeroes stand where nothing is
  // written, so that the wrong length is the same each time.
  std::array<std::uint8_t, kFrameHeaderSize * kFrameHeaderSize> words{};
  for (std::size_t count = 0; count < kFrameHeaderSize;) {
    const ssize_t got =
        incoming.receive(words.data() + count * kFrameHeaderSize, kFrameHeaderSize - count);
    if (got < 1) g_error("Failed to receive bytes length from server");
    count += static_cast<std::size_t>(got);
  }
  return bodyLength(std::span(words).first<kFrameHeaderSize>());
}

MallocBytes receivePayload(std::size_t length) {
  // The server may announce more than the system can give. No length is refused before that.
  MallocBytes buffer(static_cast<unsigned char*>(std::malloc(length > 0 ? length : 1)));
  if (!buffer) g_error("Failed to receive bytes from server");
  for (std::size_t count = 0; count < length;) {
    const ssize_t got = incoming.receive(buffer.get() + count, length - count);
    if (got < 1) g_error("Failed to receive bytes from server");
    count += static_cast<std::size_t>(got);
  }
  return buffer;
}

}  // namespace

int openConnection(const char* host, std::int32_t port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  if (establish(socket, host, port)) return socket;
  close(socket);
  return -1;
}

int sendZephMsg(int socket, const zeph::ZephMsg& message) {
  // Everything that is sent stands in the log at debug level, the texts of a script among it.
  g_debug("Sending MSG\n%s", LogText(message).get());
  const std::size_t length = message.ByteSizeLong();
  static std::string frame;
  const BoundedReuse reuse(frame);
  frame.resize(kFrameHeaderSize + length);
  // Header and payload in one buffer: the length leaves in one piece.
  const auto header = frameHeader(static_cast<std::uint32_t>(length));
  std::memcpy(frame.data(), header.data(), header.size());
  message.SerializeToArray(frame.data() + kFrameHeaderSize, static_cast<int>(length));
  sendAll(socket, reinterpret_cast<const unsigned char*>(frame.data()), frame.size());
  return 0;
}

int receiveZephMsg(int socket, zeph::ZephMsg& message) {
  incoming.attend(socket);
  if (incoming.isEmpty() && !messageWaits(socket)) return 1;
  g_debug("message received");
  const std::uint32_t length = receiveLength();
  const MallocBytes payload = receivePayload(length);
  parseZephMsg({payload.get(), length}, message);
  // Messages with credentials never reach the log.
  if (!message.has_social()) g_debug("Received MSG\n%s", LogText(message).get());
  return 0;
}

}  // namespace morvik
