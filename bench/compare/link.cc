#include "compare/link.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "server/frame.h"

namespace morvik::bench {
namespace {

constexpr std::size_t kBufferSize = 1 << 20;  // far above any message of the benchmark
constexpr int kBacklog = 16;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void awaitReadable(int descriptor) {
  if (!test::becomesReady(descriptor, POLLIN)) throw std::runtime_error("an application is silent");
}

}  // namespace

std::string frameOf(const zeph::ZephMsg& message) {
  return devkit::frameOf(message.SerializeAsString());
}

Link::Link(Descriptor socket) : socket_(std::move(socket)), buffer_(kBufferSize, '\0') {
  const int atOnce = 1;
  setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
  answer_.set_id("answer");
  answer_.mutable_response()->set_code(zeph::OK);
}

const zeph::ZephMsg& Link::receive() {
  const std::string_view payload = nextPayload();
  if (!received_.ParseFromArray(payload.data(), static_cast<int>(payload.size())))
    throw std::runtime_error("an application sent what is no message");
  return received_;
}

void Link::skip(int messages) {
  while (messages-- > 0) nextPayload();
}

void Link::answer() {
  answer_.set_correlationid(received_.id());
  const std::size_t length = answer_.ByteSizeLong();
  frame_ = devkit::frameHeader(static_cast<std::uint32_t>(length));
  answer_.AppendToString(&frame_);
  send(frame_);
}

std::vector<double> Link::roundTrips(int count) {
  std::vector<double> times;
  times.reserve(static_cast<std::size_t>(count));
  receive();
  for (int i = 0; i < count; ++i) {
    const auto answered = Clock::now();
    answer();
    receive();
    times.push_back(Microseconds(Clock::now() - answered).count());
  }
  answer();
  return times;
}

std::string_view Link::nextPayload() {
  for (;;) {
    const std::string_view bytes(buffer_.data() + begin_, end_ - begin_);
    if (bytes.size() >= devkit::kFrameHeaderSize) {
      const std::size_t length = devkit::payloadLength(bytes.substr(0, devkit::kFrameHeaderSize));
      const std::size_t whole = devkit::kFrameHeaderSize + length;
      if (whole > kBufferSize) throw std::runtime_error("an application sent too long a message");
      if (bytes.size() >= whole) {
        begin_ += whole;
        return bytes.substr(devkit::kFrameHeaderSize, length);
      }
    }
    readMore();
  }
}

void Link::readMore() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  for (;;) {
    const ssize_t size =
        recv(socket_.get(), buffer_.data() + end_, kBufferSize - end_, MSG_DONTWAIT);
    if (size == 0) throw std::runtime_error("an application has gone");
    if (size > 0) {
      end_ += static_cast<std::size_t>(size);
      return;
    }
    if (errno != EAGAIN && errno != EINTR) fail("receive");
    if (waiting_ == Waiting::kPolls) awaitReadable(socket_.get());
  }
}

void Link::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) fail("send");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

Server::Server() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* where = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket_.get(), where, size) != 0 || listen(socket_.get(), kBacklog) != 0 ||
      getsockname(socket_.get(), where, &size) != 0)
    fail("server");
  port_ = ntohs(address.sin_port);
}

Link Server::accept() {
  awaitReadable(socket_.get());
  Descriptor socket(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (socket.get() < 0) fail("accept");
  return Link(std::move(socket));
}

}  // namespace morvik::bench
