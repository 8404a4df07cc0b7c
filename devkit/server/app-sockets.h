// Applications behind their sockets: accepts them, puts their frames together to messages, and
// takes messages back to them.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "device/device.h"
#include "device/owned.h"
#include "server/app-connection.h"
#include "server/loopback-service.h"

namespace morvik::devkit {

/// Works on the thread-default main context. Applications are numbered 1, 2, 3 as they come. One
/// that sends what is no message is sent away.
class AppSockets : public Outlet, private AppConnection::Owner {
 public:
  enum class Failure { kPortBusy, kOther };

  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void applicationCame(AppNumber application) = 0;
    /// A message with all its required fields.
    virtual void messageArrived(AppNumber application, zeph::ZephMsg message) = 0;
    /// `trouble` tells what the application did wrong, if that is why.
    virtual void applicationLeft(AppNumber application, const std::string& trouble) = 0;
  };

  /// The owner must outlive the sockets.
  explicit AppSockets(Owner& owner);
  /// Applications see the end of their connections. Nobody is told.
  ~AppSockets() override;
  AppSockets(const AppSockets&) = delete;
  AppSockets& operator=(const AppSockets&) = delete;

  /// Listens on 127.0.0.1. Port 0 takes a free one. Called once.
  /// Gives the reason when it cannot listen, and its text in `text`.
  [[nodiscard]] std::optional<Failure> listen(std::uint16_t port, std::string& text);

  /// The port that it listens on; valid after a successful `listen`.
  std::uint16_t port() const { return service_.port(); }

  /// The port of an application's own end of its connection; 0 when there is no such application.
  std::uint16_t portOf(AppNumber application) const;

  /// Whether something that was sent has not yet arrived at an application.
  bool isDelivering() const;

  void send(AppNumber application, const zeph::ZephMsg& message, const Delivery& delivery) override;
  void drop(AppNumber application) override;

 private:
  void accept(GSocketConnection* socket);
  void refuse(AppNumber application, const std::string& trouble);

  void payloadArrived(AppNumber application, const std::string& payload) override;
  void connectionEnded(AppNumber application, const std::string& trouble) override;

  Owner& owner_;
  LoopbackService service_{[this](GSocketConnection* connection) { accept(connection); }};
  AppNumber lastNumber_ = 0;
  std::map<AppNumber, std::shared_ptr<AppConnection>> connections_;
};

}  // namespace morvik::devkit
