// The recording HTTP server.
#include "support/web/recording-server.h"

#include <sys/socket.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace morvik::test {
namespace {

constexpr std::chrono::seconds kDeadline{20};

bool readMore(int connection, std::string& request) {
  std::array<char, 65536> piece;
  const ssize_t count = recv(connection, piece.data(), piece.size(), 0);
  if (count <= 0) return false;
  request.append(piece.data(), static_cast<std::size_t>(count));
  return true;
}

std::size_t bodyLengthOf(const std::string& head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t at = head.find(kName);
  return at == std::string::npos ? 0 : std::strtoul(head.c_str() + at + kName.size(), nullptr, 10);
}

// A client with a large body asks first whether it may send it.
std::string readRequest(int connection) {
  constexpr std::string_view kHeadEnd = "\r\n\r\n";
  std::string request;
  while (request.find(kHeadEnd) == std::string::npos) {
    if (!readMore(connection, request)) return request;
  }
  const std::string head = request.substr(0, request.find(kHeadEnd) + kHeadEnd.size());
  if (head.find("\r\nExpect: 100-continue") != std::string::npos) {
    sendAll(connection, "HTTP/1.1 100 Continue\r\n\r\n");
  }
  while (request.size() < head.size() + bodyLengthOf(head)) {
    if (!readMore(connection, request)) return request;
  }
  return request;
}

}  // namespace

std::string response(const std::string& body, const std::string& headerLines) {
  return "HTTP/1.1 200 OK\r\n" + headerLines + "Content-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

RecordingServer::RecordingServer()
    : answer_(response("")), server_([this](int connection) { serveOne(connection); }) {}

std::string RecordingServer::url(const std::string& path) const {
  return "http://" + host() + path;
}

void RecordingServer::answerWith(std::string bytes) {
  const std::lock_guard lock(mutex_);
  answer_ = std::move(bytes);
}

std::string RecordingServer::takeRequest() {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, kDeadline, [this] { return !requests_.empty(); })) return {};
  std::string request = std::move(requests_.front());
  requests_.pop_front();
  return request;
}

std::size_t RecordingServer::waiting() {
  const std::lock_guard lock(mutex_);
  return requests_.size();
}

void RecordingServer::holdBack() {
  const std::lock_guard lock(mutex_);
  held_ = true;
}

void RecordingServer::letGo() {
  const std::lock_guard lock(mutex_);
  held_ = false;
  changed_.notify_all();
}

// Kept before it is answered, so that whoever has the answer finds the request.
void RecordingServer::serveOne(int connection) {
  std::string request = readRequest(connection);
  std::unique_lock lock(mutex_);
  requests_.push_back(std::move(request));
  changed_.notify_all();
  changed_.wait_for(lock, kDeadline, [this] { return !held_; });
  const std::string answer = answer_;
  lock.unlock();
  sendAll(connection, answer);
}

}  // namespace morvik::test
