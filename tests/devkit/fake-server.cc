// A listening socket and one connection, driven by the test's loop.
#include "fake-server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace morvik::test {

using namespace devkit;

FakeServer::FakeServer(Came came, Received received)
    : came_(std::move(came)),
      received_(std::move(received)),
      listening_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof(address);
  EXPECT_EQ(bind(listening_, generic, size), 0);
  EXPECT_EQ(listen(listening_, SOMAXCONN), 0);
  EXPECT_EQ(getsockname(listening_, generic, &size), 0);
  port_ = ntohs(address.sin_port);
  accepting_ = whenReadable(listening_, [this] { return accept(); });
}

FakeServer::~FakeServer() {
  close();
  accepting_.reset();
  ::close(listening_);
}

bool FakeServer::accept() {
  close();
  connection_ = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
  reading_ = whenReadable(connection_, [this] { return take(); });
  came_(*this);
  return true;
}

bool FakeServer::take() {
  std::array<char, 65536> bytes{};
  const ssize_t count = recv(connection_, bytes.data(), bytes.size(), 0);
  if (count <= 0) return false;
  frames_.feed(std::string_view(bytes.data(), static_cast<std::size_t>(count)));
  while (const auto payload = frames_.next()) {
    zeph::ZephMsg message;
    EXPECT_TRUE(message.ParseFromString(*payload));
    received_(*this, message);
  }
  return connection_ >= 0;
}

void FakeServer::sendBytes(const std::string& bytes) {
  EXPECT_EQ(::send(connection_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

void FakeServer::send(const zeph::ZephMsg& message) {
  sendBytes(frameOf(message.SerializePartialAsString()));
}

void FakeServer::answer(const zeph::ZephMsg& request, zeph::VReturnCode code) {
  zeph::ZephMsg message = replyTo(request);
  message.mutable_response()->set_code(code);
  send(message);
}

void FakeServer::close() {
  if (connection_ < 0) return;
  reading_.reset();
  ::close(std::exchange(connection_, -1));
}

void FakeServer::reset() {
  const linger atOnce{1, 0};
  setsockopt(connection_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
  close();
}

}  // namespace morvik::test
