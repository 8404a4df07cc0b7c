// A replay behind its socket, as DeviceServer is the virtual device behind one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "replay/replay.h"
#include "server/agenda.h"
#include "server/app-sockets.h"

namespace morvik::devkit {

/// Works on the thread-default main context.
class ReplayServer : private AppSockets::Owner {
 public:
  /// A scheduler that is given must outlive the server and stands in the place of the real time.
  explicit ReplayServer(Recording recording, Scheduler* scheduler = nullptr);
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  /// As DeviceServer::listen.
  [[nodiscard]] std::optional<AppSockets::Failure> listen(std::uint16_t port, std::string& text) {
    return sockets_.listen(port, text);
  }
  std::uint16_t port() const { return sockets_.port(); }
  /// The port of an application's own end of its connection; 0 when there is no such application.
  std::uint16_t portOf(AppNumber application) const { return sockets_.portOf(application); }
  /// Whether something that was sent has not yet arrived at an application.
  bool isDelivering() const { return sockets_.isDelivering(); }
  Replay& replay() { return replay_; }

 private:
  void applicationCame(AppNumber application) override { replay_.applicationCame(application); }
  void messageArrived(AppNumber application, zeph::ZephMsg message) override {
    replay_.receive(application, std::move(message));
  }
  void applicationLeft(AppNumber application, const std::string& trouble) override {
    replay_.applicationLeft(application, trouble);
  }

  AppSockets sockets_;
  Agenda agenda_;
  Replay replay_;
};

}  // namespace morvik::devkit
