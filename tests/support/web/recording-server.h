// An HTTP server of the test's own on a loopback socket: keeps every request byte for byte and
// answers with the bytes that the test gives.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>

#include "support/web/loopback-server.h"

namespace morvik::test {

/// A whole response: status 200, these further header lines (each with its line end), the length
/// and the body.
std::string response(const std::string& body, const std::string& headerLines = "");

/// Serves one connection after the other from a thread of its own, one request on each.
class RecordingServer {
 public:
  RecordingServer();

  /// "127.0.0.1:port".
  [[nodiscard]] std::string host() const { return server_.host(); }
  /// "http://127.0.0.1:port" and the path.
  [[nodiscard]] std::string url(const std::string& path = "/") const;

  /// From now on every request is answered with these bytes, then the connection is closed. At
  /// first an empty response.
  void answerWith(std::string bytes);

  /// From now on requests wait for their answer until they are let go.
  void holdBack();
  void letGo();

  /// The oldest request that was not taken yet, from the first byte to the last. Waits for one
  /// until a generous deadline; empty after it.
  std::string takeRequest();
  /// How many requests wait to be taken.
  std::size_t waiting();

 private:
  void serveOne(int connection);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::string answer_;
  bool held_ = false;
  std::deque<std::string> requests_;
  LoopbackServer server_;  // the last one: its thread uses the others
};

}  // namespace morvik::test
