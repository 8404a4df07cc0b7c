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
  explicit ReplayServer(Recording recording);
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  /// As DeviceServer::listen.
  [[nodiscard]] std::optional<AppSockets::Failure> listen(std::uint16_t port, std::string& text) {
    return sockets_.listen(port, text);
  }
  std::uint16_t port() const { return sockets_.port(); }
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
