// What is heard of the connections, as events.
#include "run/relay.h"

namespace morvik::devkit {
namespace {

constexpr guint16 kUsualPort = 7410;

}  // namespace

Relay::~Relay() {
  for (const auto& [number, connection] : connections_) connection->reset();
}

std::optional<std::string> Relay::listen(const std::string& server) {
  GErrorOwned error;
  server_.reset(g_network_address_parse(server.c_str(), kUsualPort, error.out()));
  if (!server_ || !service_.listen(0, error)) return error.text();
  return std::nullopt;
}

std::uint16_t Relay::portOf(AppNumber application) const {
  const auto found = connections_.find(application);
  return found != connections_.end() ? found->second->applicationPort() : std::uint16_t{0};
}

void Relay::accept(GSocketConnection* socket) {
  const AppNumber number = ++lastNumber_;
  RelayedConnection::Owner& owner = *this;
  const auto connection = std::make_shared<RelayedConnection>(owner, number, socket);
  connections_[number] = connection;
  events_.raise(Came{number});
  connection->connectTo(server_.get());
}

void Relay::receivedFrom(AppNumber application, zeph::ZephMsg message) {
  events_.raise(Received{application, std::make_shared<zeph::ZephMsg>(std::move(message))});
}

void Relay::sentTo(AppNumber application, zeph::ZephMsg message) {
  events_.raise(Sent{application, std::make_shared<zeph::ZephMsg>(std::move(message))});
}

void Relay::trouble(Trouble trouble) { events_.raise(std::move(trouble)); }

void Relay::connectionEnded(AppNumber application) {
  connections_.erase(application);
  events_.raise(Left{application});
}

}  // namespace morvik::devkit
