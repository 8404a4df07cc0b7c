// The runner's end of the clocks of applications under test: tells them the time, and hears when
// they have nothing to do.
#pragma once

#include <sys/types.h>

#include <functional>
#include <list>
#include <optional>
#include <string>

#include "device/when-readable.h"
#include "run/file-descriptor.h"
#include "test/clock-messages.h"
#include "test/virtual-time.h"

namespace morvik::devkit {

/// Works on the thread-default main context.
class ClockServer {
 public:
  /// Called when an application has come, has reported or has gone.
  using Heard = std::function<void()>;

  explicit ClockServer(Heard heard) : heard_(std::move(heard)) {}
  ClockServer(const ClockServer&) = delete;
  ClockServer& operator=(const ClockServer&) = delete;

  /// Makes the socket; its folder's owner removes it. False with the reason in `trouble`. Called
  /// once, before all others.
  [[nodiscard]] bool listen(const std::string& path, std::string& trouble);

  /// Tells all applications that it is that late, and those that come later too.
  void tell(Nanoseconds time);

  /// What an application has said of itself since it was told the time; nothing when it has not, or
  /// is not there.
  std::optional<ClockReport> reportOf(pid_t process) const;

 private:
  struct Peer {
    pid_t process;
    FileDescriptor socket;
    std::optional<ClockReport> report = {};
    GSourceAttached source = {};
  };

  bool accept();
  bool hear(Peer& peer);
  void send(const Peer& peer) const;

  Heard heard_;
  ClockOrder order_{};
  std::list<Peer> peers_;
  FileDescriptor socket_;
  GSourceAttached source_;
};

}  // namespace morvik::devkit
