// A listening local socket, and one connection for each application.
#include "test/clock-server.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace morvik::devkit {
namespace {

// Which process is at the other end.
pid_t processBehind(int socket) {
  ucred who{};
  socklen_t size = sizeof who;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &who, &size) == 0 ? who.pid : 0;
}

bool bindTo(int socket, const std::string& path) {
  constexpr int kWaiting = 8;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return false;
  }
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
         ::listen(socket, kWaiting) == 0;
}

}  // namespace

bool ClockServer::listen(const std::string& path, std::string& trouble) {
  socket_ = FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket_.valid() || !bindTo(socket_.get(), path)) {
    trouble = path + ": " + std::strerror(errno);
    return false;
  }
  source_ = whenReadable(socket_.get(), [this] { return accept(); });
  return true;
}

bool ClockServer::accept() {
  FileDescriptor socket(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket.valid()) return true;
  const pid_t process = processBehind(socket.get());
  peers_.push_back({.process = process, .socket = std::move(socket)});
  Peer& peer = peers_.back();
  peer.source = whenReadable(peer.socket.get(), [this, &peer] { return hear(peer); });
  send(peer);
  heard_();
  return true;
}

void ClockServer::tell(Nanoseconds time) {
  order_ = {order_.number + 1, time.count()};
  for (const Peer& peer : peers_) send(peer);
}

// One that cannot be told any more is about to be seen gone.
void ClockServer::send(const Peer& peer) const {
  static_cast<void>(::send(peer.socket.get(), &order_, sizeof order_, MSG_NOSIGNAL));
}

bool ClockServer::hear(Peer& peer) {
  ClockReport report{};
  const bool isThere = recv(peer.socket.get(), &report, sizeof report, 0) == sizeof report;
  if (isThere) {
    peer.report = report;
  } else {
    peers_.remove_if([&peer](const Peer& one) { return &one == &peer; });
  }
  heard_();
  return isThere;
}

std::optional<ClockReport> ClockServer::reportOf(pid_t process) const {
  const auto found = std::ranges::find(peers_, process, &Peer::process);
  if (found == peers_.end() || !found->report) return std::nullopt;
  return found->report->number == order_.number ? found->report : std::nullopt;
}

}  // namespace morvik::devkit
