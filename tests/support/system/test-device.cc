#include "support/system/test-device.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace morvik::test {
namespace {

constexpr int kBacklog = 16;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

Descriptor boundSocket() {
  Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopback();
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    fail("bind");
  return socket;
}

template <auto name>
int portFrom(const Descriptor& socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (name(socket.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) fail("port");
  return ntohs(address.sin_port);
}

zeph::VReturnCode codeNamed(std::string_view name) {
  zeph::VReturnCode code{};
  if (!zeph::VReturnCode_Parse(std::string(name), &code))
    throw std::runtime_error("no such code: " + std::string(name));
  return code;
}

bool nothingToRead(int descriptor) {
  pollfd watched{descriptor, POLLIN, 0};
  return poll(&watched, 1, 0) == 0;
}

// Bytes that wait in a loopback socket for its owner, from the kernel's table, whose lines are:
// slot, local address:port, remote address:port, state, tx_queue:rx_queue, ... in hexadecimal.
std::optional<unsigned long> waitingBytes(int localPort, int remotePort) {
  std::ifstream table("/proc/net/tcp");
  std::string line;
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string slot, local, remote, state, queues;
    fields >> slot >> local >> remote >> state >> queues;
    const auto portOf = [](const std::string& address) {
      return std::stoi(address.substr(address.find(':') + 1), nullptr, 16);
    };
    if (slot == "sl" || portOf(local) != localPort || portOf(remote) != remotePort) continue;
    return std::stoul(queues.substr(queues.find(':') + 1), nullptr, 16);
  }
  return std::nullopt;
}

}  // namespace

std::string frameOf(const zeph::ZephMsg& message) {
  return devkit::frameOf(message.SerializePartialAsString());
}

zeph::ZephMsg responseTo(const zeph::ZephMsg& request, std::string_view code) {
  zeph::ZephMsg message = replyTo(request);
  message.mutable_response()->set_code(codeNamed(code));
  return message;
}

zeph::ZephMsg eventFor(const zeph::ZephMsg& request, std::string_view code) {
  zeph::ZephMsg message = replyTo(request);
  message.mutable_event()->set_code(codeNamed(code));
  return message;
}

zeph::ZephMsg stopNotice() {
  zeph::ZephMsg message = newMessage();
  message.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  return message;
}

zeph::ZephMsg DeviceLink::receive() {
  const std::uint32_t length = devkit::payloadLength(receiveBytes(devkit::kFrameHeaderSize));
  zeph::ZephMsg message;
  if (!message.ParseFromString(receiveBytes(length)))
    throw std::runtime_error("the application sent what does not parse");
  return message;
}

std::string DeviceLink::receiveBytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t have = 0; have < count;) {
    if (!becomesReady(socket_.get(), POLLIN)) throw std::runtime_error("nothing more was sent");
    const ssize_t more = recv(socket_.get(), bytes.data() + have, count - have, 0);
    if (more < 0) fail("receive");
    if (more == 0) throw std::runtime_error("the application has gone");
    have += static_cast<std::size_t>(more);
  }
  return bytes;
}

bool DeviceLink::quiet() const { return nothingToRead(socket_.get()); }

void DeviceLink::send(const zeph::ZephMsg& message) { sendBytes(frameOf(message)); }

void DeviceLink::sendBytes(std::string_view bytes) {
  const int atOnce = 1;
  setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) fail("send");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void DeviceLink::sendByteByByte(std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(1)) {
    sendBytes(bytes.substr(0, 1));
    awaitRead();
  }
}

void DeviceLink::awaitRead() const {
  const int ours = portFrom<getsockname>(socket_);
  const int theirs = portFrom<getpeername>(socket_);
  waitUntil("the application reads", [&] {
    const auto waiting = waitingBytes(theirs, ours);
    return !waiting || *waiting == 0;
  });
}

void DeviceLink::reply(const zeph::ZephMsg& request, std::string_view code) {
  send(responseTo(request, code));
}

void DeviceLink::event(const zeph::ZephMsg& request, std::string_view code) {
  send(eventFor(request, code));
}

void DeviceLink::finishSending() { shutdown(socket_.get(), SHUT_WR); }

void DeviceLink::reset() {
  const linger atOnce{1, 0};
  setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  socket_.close();
}

TestDevice::TestDevice() : TestDevice(kBacklog) {}

TestDevice::TestDevice(int backlog)
    : socket_(boundSocket()), port_(portFrom<getsockname>(socket_)) {
  if (listen(socket_.get(), backlog) != 0) fail("listen");
}

DeviceLink TestDevice::accept() {
  if (!becomesReady(socket_.get(), POLLIN)) throw std::runtime_error("nobody connected");
  Descriptor link(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (link.get() < 0) fail("accept");
  return DeviceLink(std::move(link));
}

bool TestDevice::quiet() const { return nothingToRead(socket_.get()); }

// A listener with a backlog of nought still holds one connection.
FullDevice::FullDevice() : TestDevice(0), guest_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = loopback();
  address.sin_port = htons(static_cast<uint16_t>(port()));
  if (connect(guest_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    fail("connect");
}

int unusedPort() { return portFrom<getsockname>(boundSocket()); }

}  // namespace morvik::test
