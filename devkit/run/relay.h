// Takes a real device server in the place of the virtual one: applications connect here, their
// bytes go on to the server and its bytes back, untouched, and who listens hears the messages in
// them.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "device/events.h"
#include "device/owned.h"
#include "run/relayed-connection.h"
#include "server/loopback-service.h"

namespace morvik::devkit {

/// Works on the thread-default main context. Each application gets a connection of its own to the
/// server. Bytes are passed on as they come, neither put together nor taken apart: a length that
/// the server sends in two pieces arrives in two. What one side does not read is not read from the
/// other. The end of a stream and a reset are passed on as such. A server that cannot be reached is
/// a reset: the application is connected by then.
class Relay : private RelayedConnection::Owner {
 public:
  /// Raises Came and Left of applications, Received and Sent with their messages, and Trouble: how
  /// the server ended a connection, or what passed that is no message. The events must outlive the
  /// relay.
  explicit Relay(Events& events) : events_(events) {}
  /// Applications and the server see their connections reset. Nobody is told.
  ~Relay() override;
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  /// Listens on a free port of 127.0.0.1 for applications that are to reach `server`, "HOST:PORT",
  /// or "HOST" for the usual port. Called once. The reason when it cannot.
  [[nodiscard]] std::optional<std::string> listen(const std::string& server);

  /// The port that it listens on; valid after a successful `listen`.
  std::uint16_t port() const { return service_.port(); }

  /// The port of an application's own end of its connection; 0 when there is no such application.
  std::uint16_t portOf(AppNumber application) const;

 private:
  void accept(GSocketConnection* socket);

  void receivedFrom(AppNumber application, zeph::ZephMsg message) override;
  void sentTo(AppNumber application, zeph::ZephMsg message) override;
  void trouble(Trouble trouble) override;
  void connectionEnded(AppNumber application) override;

  Events& events_;
  LoopbackService service_{[this](GSocketConnection* connection) { accept(connection); }};
  GOwned<GSocketConnectable> server_;
  AppNumber lastNumber_ = 0;
  std::map<AppNumber, std::shared_ptr<RelayedConnection>> connections_;
};

}  // namespace morvik::devkit
