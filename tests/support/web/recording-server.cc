// The recording HTTP server.
#include "support/web/recording-server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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

void sendAll(int connection, const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
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
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), answer_(response("")) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener_, plain, size) != 0 || listen(listener_, 16) != 0) abort();
  if (getsockname(listener_, plain, &size) != 0) abort();
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { serve(); });
}

RecordingServer::~RecordingServer() {
  shutdown(listener_, SHUT_RDWR);  // ends the wait for a connection
  thread_.join();
  close(listener_);
}

std::string RecordingServer::host() const { return "127.0.0.1:" + std::to_string(port_); }

std::string RecordingServer::url(const std::string& path) const {
  return "http://" + host() + path;
}

void RecordingServer::answerWith(std::string bytes) {
  const std::lock_guard lock(mutex_);
  answer_ = std::move(bytes);
}

std::string RecordingServer::takeRequest() {
  std::unique_lock lock(mutex_);
  if (!arrived_.wait_for(lock, kDeadline, [this] { return !requests_.empty(); })) return {};
  std::string request = std::move(requests_.front());
  requests_.pop_front();
  return request;
}

std::size_t RecordingServer::waiting() {
  const std::lock_guard lock(mutex_);
  return requests_.size();
}

void RecordingServer::serve() {
  for (;;) {
    const int connection = accept(listener_, nullptr, nullptr);
    if (connection < 0) return;
    serveOne(connection);
    close(connection);
  }
}

// Kept before it is answered, so that whoever has the answer finds the request.
void RecordingServer::serveOne(int connection) {
  std::string request = readRequest(connection);
  std::unique_lock lock(mutex_);
  requests_.push_back(std::move(request));
  arrived_.notify_all();
  const std::string answer = answer_;
  lock.unlock();
  sendAll(connection, answer);
}

}  // namespace morvik::test
