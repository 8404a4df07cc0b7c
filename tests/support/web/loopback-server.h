// What the servers of the tests stand on: a listening socket on a free port of the loopback
// interface, and a thread that serves its connections.
#pragma once

#include <netinet/in.h>

#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace morvik::test {

/// A port of the loopback interface, as the socket calls take it. Port 0 is any free one.
sockaddr_in loopback(int port);

/// "127.0.0.1:port".
std::string hostOn(int port);

/// A TCP socket that listens. Whoever makes one closes it.
struct Listener {
  int socket;
  int port;
};
/// On a free port. Throws std::runtime_error when there is none.
Listener listenOnLoopback();

/// All of the bytes, or as many as the other end takes.
void sendAll(int connection, std::string_view bytes);

/// Serves one connection after the other from a thread of its own.
class LoopbackServer {
 public:
  /// `serveOne` runs on that thread; the connection is closed behind it. What it uses must outlive
  /// this object.
  explicit LoopbackServer(std::function<void(int connection)> serveOne);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  [[nodiscard]] std::string host() const { return hostOn(listener_.port); }

 private:
  void serve();

  std::function<void(int connection)> serveOne_;
  Listener listener_;
  std::thread thread_;
};

}  // namespace morvik::test
