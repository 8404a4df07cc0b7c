// The listening socket and the table of connections.
#include "server/device-server.h"

#include <algorithm>

#include "device/commands.h"

namespace morvik::devkit {

DeviceServer::DeviceServer(std::unique_ptr<Store> store, Scheduler* scheduler)
    : service_(g_socket_service_new()),
      device_(*this, scheduler != nullptr ? *scheduler : agenda_, std::move(store)) {
  g_signal_connect(service_.get(), "incoming", G_CALLBACK(onIncoming), this);
}

DeviceServer::~DeviceServer() {
  g_signal_handlers_disconnect_by_data(service_.get(), this);
  g_socket_service_stop(service_.get());
  g_socket_listener_close(G_SOCKET_LISTENER(service_.get()));
  for (const auto& [number, connection] : connections_) connection->close();
}

std::optional<DeviceServer::Failure> DeviceServer::listen(std::uint16_t port, std::string& text) {
  const GOwned<GSocketAddress> wanted(g_inet_socket_address_new_from_string("127.0.0.1", port));
  GSocketAddress* taken = nullptr;
  GErrorOwned error;
  if (g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), wanted.get(),
                                    G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr, &taken,
                                    error.out()) == FALSE) {
    text = error.text();
    return error.is(G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE) ? Failure::kPortBusy : Failure::kOther;
  }
  const GOwned<GSocketAddress> address(taken);
  port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(taken));
  g_socket_service_start(service_.get());
  return std::nullopt;
}

std::uint16_t DeviceServer::portOf(AppNumber application) const {
  const auto found = connections_.find(application);
  return found != connections_.end() ? found->second->remotePort() : std::uint16_t{0};
}

bool DeviceServer::isDelivering() const {
  return std::ranges::any_of(connections_,
                             [](const auto& entry) { return entry.second->isDelivering(); });
}

int DeviceServer::onIncoming(GSocketService* /*service*/, GSocketConnection* socket,
                             GObject* /*source*/, void* server) {
  static_cast<DeviceServer*>(server)->accept(socket);
  return TRUE;
}

void DeviceServer::accept(GSocketConnection* socket) {
  const AppNumber number = ++lastNumber_;
  AppConnection::Owner& owner = *this;
  const auto connection = std::make_shared<AppConnection>(owner, number, socket);
  connections_[number] = connection;
  device_.applicationCame(number);
  connection->start();
}

void DeviceServer::send(AppNumber application, const zeph::ZephMsg& message,
                        const Delivery& delivery) {
  const auto found = connections_.find(application);
  if (found == connections_.end()) return;
  found->second->send(message.SerializeAsString(), delivery);
}

void DeviceServer::drop(AppNumber application) { refuse(application, ""); }

// Parsed in parts and tested afterwards, since a plain parse prints its own complaint about a
// missing field on standard error.
void DeviceServer::payloadArrived(AppNumber application, const std::string& payload) {
  zeph::ZephMsg message;
  if (!message.ParsePartialFromString(payload)) {
    refuse(application,
           "sent a frame of " + std::to_string(payload.size()) + " bytes that is not a message");
  } else if (!message.IsInitialized()) {
    refuse(application, "sent a message without " + message.InitializationErrorString());
  } else {
    receive(device_, application, std::move(message));
  }
}

void DeviceServer::refuse(AppNumber application, const std::string& trouble) {
  const auto found = connections_.find(application);
  if (found != connections_.end()) found->second->close();
  connectionEnded(application, trouble);
}

void DeviceServer::connectionEnded(AppNumber application, const std::string& trouble) {
  connections_.erase(application);
  device_.applicationLeft(application, trouble);
}

}  // namespace morvik::devkit
