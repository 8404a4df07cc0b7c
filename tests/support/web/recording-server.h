// An HTTP server of the test's own on a loopback socket: keeps every request byte for byte and
// answers with the bytes that the test gives.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace morvik::test {

/// A whole response: status 200, these further header lines (each with its line end), the length
/// and the body.
std::string response(const std::string& body, const std::string& headerLines = "");

/// Serves one connection after the other from a thread of its own, one request on each.
class RecordingServer {
 public:
  RecordingServer();
  ~RecordingServer();
  RecordingServer(const RecordingServer&) = delete;
  RecordingServer& operator=(const RecordingServer&) = delete;

  /// "127.0.0.1:port".
  [[nodiscard]] std::string host() const;
  /// "http://127.0.0.1:port" and the path.
  [[nodiscard]] std::string url(const std::string& path = "/") const;

  /// From now on every request is answered with these bytes, then the connection is closed. At
  /// first an empty response.
  void answerWith(std::string bytes);

  /// The oldest request that was not taken yet, from the first byte to the last. Waits for one
  /// until a generous deadline; empty after it.
  std::string takeRequest();
  /// How many requests wait to be taken.
  std::size_t waiting();

 private:
  void serve();
  void serveOne(int connection);

  int listener_;
  int port_ = 0;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::string answer_;
  std::deque<std::string> requests_;
  std::thread thread_;
};

}  // namespace morvik::test
