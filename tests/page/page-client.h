// Whoever talks to the page's server in tests: a bare socket, and a page's own kind of socket.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <deque>
#include <string>

#include <nlohmann/json.hpp>

#include "device/json.h"
#include "device/when-readable.h"
#include "devkit/loop.h"

namespace morvik::test {

/// Bytes to a port of this machine and back, on the test's loop.
class BareClient {
 public:
  BareClient(Loop& loop, std::uint16_t port);
  ~BareClient();
  BareClient(const BareClient&) = delete;
  BareClient& operator=(const BareClient&) = delete;

  void send(const std::string& bytes);
  /// What has come, once that holds the text; a failure of the test when it does not in time.
  std::string waitFor(const std::string& text);
  /// What has come, once the server has ended the connection.
  std::string waitForEnd();
  /// What arrives from now on is left in the socket, whose room is small.
  void stopReading();

 private:
  bool take();

  Loop& loop_;
  int fd_;
  devkit::GSourceAttached source_;
  std::string received_;
  bool ended_ = false;
};

/// The head of a request with Host and these further lines, each with its line end.
std::string requestHead(const std::string& line, std::uint16_t port, const std::string& more = "");

/// Opens the socket of the page at this address by hand and stops reading behind its head.
class DeafPage {
 public:
  DeafPage(Loop& loop, const std::string& address);
  /// A text frame as a page sends it, so many times at once: few enough for the socket to take.
  void send(const std::string& text, int times = 1);
  BareClient& client() { return client_; }

 private:
  BareClient client_;
};

/// A WebSocket, and the frames that it got.
class SocketClient {
 public:
  /// Waits until it is open, or is refused. An empty origin tells none.
  SocketClient(Loop& loop, const std::string& address, const std::string& origin);
  ~SocketClient();
  SocketClient(const SocketClient&) = delete;
  SocketClient& operator=(const SocketClient&) = delete;

  bool isOpen() const { return connection_ != nullptr; }
  /// The next frame, in the order of arrival; null when none comes.
  devkit::Json receive();
  /// The same as it came; empty when none comes.
  std::string receiveText();
  void send(const devkit::Json& frame) { sendText(frame.dump()); }
  void sendText(const std::string& text);
  void sendBytes(const std::string& bytes);
  /// The code with which the server has ended it, 0 for none; waits for the end.
  int closeCode();

 protected:
  /// How many frames have come in all.
  std::uint64_t arrived() const { return arrived_; }
  /// Drops those that nobody has received, and gives how many they were.
  std::size_t dropAll();

 private:
  static void onConnected(GObject* session, GAsyncResult* result, gpointer client);
  static void onMessage(SoupWebsocketConnection* connection, int type, GBytes* message,
                        gpointer client);
  static void onClosed(SoupWebsocketConnection* connection, gpointer client);

  Loop& loop_;
  devkit::GOwned<SoupSession> session_;
  devkit::GOwned<SoupWebsocketConnection> connection_;
  std::deque<std::string> frames_;
  std::uint64_t arrived_ = 0;
  bool answered_ = false;
  bool closed_ = false;
};

/// A page's socket.
class PageClient : public SocketClient {
 public:
  PageClient(Loop& loop, const std::string& address,
             const std::string& origin = "http://127.0.0.1");

  using SocketClient::receive;
  /// The next frame of that type; others before it are dropped.
  devkit::Json receive(const std::string& type);
  /// Sends and gives the outcome.
  devkit::Json ask(const devkit::Json& frame);
  /// Acknowledges everything that has come, and gives how many frames that were.
  std::size_t seeAll();
};

std::uint16_t portOf(const std::string& address);
/// The path of an address, with the slash in front.
std::string pathOf(const std::string& address);
/// An address without its path.
std::string originOf(const std::string& address);

}  // namespace morvik::test
