// Sockets on the loopback interface.
#include "support/web/loopback-server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace morvik::test {

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

std::string hostOn(int port) { return "127.0.0.1:" + std::to_string(port); }

Listener listenOnLoopback() {
  Listener listener{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), 0};
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener.socket, plain, size) != 0 || listen(listener.socket, 64) != 0 ||
      getsockname(listener.socket, plain, &size) != 0) {
    throw std::runtime_error("no port for a server");
  }
  listener.port = ntohs(address.sin_port);
  return listener;
}

void sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

LoopbackServer::LoopbackServer(std::function<void(int connection)> serveOne)
    : serveOne_(std::move(serveOne)), listener_(listenOnLoopback()), thread_([this] { serve(); }) {}

LoopbackServer::~LoopbackServer() {
  shutdown(listener_.socket, SHUT_RDWR);  // ends the wait for a connection
  thread_.join();
  close(listener_.socket);
}

void LoopbackServer::serve() {
  for (;;) {
    const int connection = accept(listener_.socket, nullptr, nullptr);
    if (connection < 0) return;
    serveOne_(connection);
    close(connection);
  }
}

}  // namespace morvik::test
