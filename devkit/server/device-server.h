// The virtual device behind its socket: accepts applications, takes their frames to the device and
// the device's messages back.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "device/device.h"
#include "server/agenda.h"
#include "server/app-sockets.h"

namespace morvik::devkit {

/// Works on the thread-default main context, like everything in GIO: a caller with a context of its
/// own pushes it (g_main_context_push_thread_default) before the server is made and leaves it
/// pushed while the context runs. All calls and all callbacks are in that one thread.
class DeviceServer : private AppSockets::Owner {
 public:
  using Failure = AppSockets::Failure;

  /// The store is the device's. A scheduler that is given must outlive the server and stands in the
  /// place of the real time.
  explicit DeviceServer(std::unique_ptr<Store> store = Store::inMemory(),
                        Scheduler* scheduler = nullptr);
  /// Applications see the end of their connections. Nobody is told.
  ~DeviceServer() override = default;
  DeviceServer(const DeviceServer&) = delete;
  DeviceServer& operator=(const DeviceServer&) = delete;

  /// Listens on 127.0.0.1. Port 0 takes a free one. Called once.
  /// Gives the reason when it cannot listen, and its text in `text`.
  [[nodiscard]] std::optional<Failure> listen(std::uint16_t port, std::string& text) {
    return sockets_.listen(port, text);
  }

  /// The port that it listens on; valid after a successful `listen`.
  std::uint16_t port() const { return sockets_.port(); }

  /// The port of an application's own end of its connection; 0 when there is no such application.
  std::uint16_t portOf(AppNumber application) const { return sockets_.portOf(application); }

  /// Whether something that was sent has not yet arrived at an application.
  bool isDelivering() const { return sockets_.isDelivering(); }

  /// Who uses it must be done with it before the server ends; observers need not be removed.
  Device& device() { return device_; }

 private:
  void applicationCame(AppNumber application) override;
  void messageArrived(AppNumber application, zeph::ZephMsg message) override;
  void applicationLeft(AppNumber application, const std::string& trouble) override;

  AppSockets sockets_;
  Agenda agenda_;
  Device device_;
};

}  // namespace morvik::devkit
