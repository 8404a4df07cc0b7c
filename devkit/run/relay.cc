// The listening socket, and what is heard of the connections as events.
#include "run/relay.h"

namespace morvik::devkit {
namespace {

constexpr guint16 kUsualPort = 7410;

}  // namespace

Relay::Relay(Events& events) : events_(events), service_(g_socket_service_new()) {
  g_signal_connect(service_.get(), "incoming", G_CALLBACK(onIncoming), this);
}

Relay::~Relay() {
  g_signal_handlers_disconnect_by_data(service_.get(), this);
  g_socket_service_stop(service_.get());
  g_socket_listener_close(G_SOCKET_LISTENER(service_.get()));
  for (const auto& [number, connection] : connections_) connection->reset();
}

std::optional<std::string> Relay::listen(const std::string& server) {
  GErrorOwned error;
  server_.reset(g_network_address_parse(server.c_str(), kUsualPort, error.out()));
  if (!server_) return error.text();
  const GOwned<GSocketAddress> wanted(g_inet_socket_address_new_from_string("127.0.0.1", 0));
  GSocketAddress* taken = nullptr;
  if (g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), wanted.get(),
                                    G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr, &taken,
                                    error.out()) == FALSE) {
    return error.text();
  }
  const GOwned<GSocketAddress> address(taken);
  port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(taken));
  g_socket_service_start(service_.get());
  return std::nullopt;
}

std::uint16_t Relay::portOf(AppNumber application) const {
  const auto found = connections_.find(application);
  return found != connections_.end() ? found->second->applicationPort() : std::uint16_t{0};
}

int Relay::onIncoming(GSocketService* /*service*/, GSocketConnection* socket, GObject* /*source*/,
                      void* relay) {
  static_cast<Relay*>(relay)->accept(socket);
  return TRUE;
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

void Relay::trouble(AppNumber application, const std::string& text) {
  events_.raise(Trouble{application, text});
}

void Relay::serverMissing(AppNumber application, const std::string& why) {
  events_.raise(Trouble{application, "the server cannot be reached: " + why, why});
}

void Relay::connectionEnded(AppNumber application) {
  connections_.erase(application);
  events_.raise(Left{application});
}

}  // namespace morvik::devkit
