// The table of connections.
#include "server/app-sockets.h"

#include <algorithm>

namespace morvik::devkit {

AppSockets::AppSockets(Owner& owner) : owner_(owner) {}

AppSockets::~AppSockets() {
  for (const auto& [number, connection] : connections_) connection->close();
}

std::optional<AppSockets::Failure> AppSockets::listen(std::uint16_t port, std::string& text) {
  GErrorOwned error;
  if (service_.listen(port, error)) return std::nullopt;
  text = error.text();
  return error.is(G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE) ? Failure::kPortBusy : Failure::kOther;
}

std::uint16_t AppSockets::portOf(AppNumber application) const {
  const auto found = connections_.find(application);
  return found != connections_.end() ? found->second->remotePort() : std::uint16_t{0};
}

bool AppSockets::isDelivering() const {
  return std::ranges::any_of(connections_,
                             [](const auto& entry) { return entry.second->isDelivering(); });
}

void AppSockets::accept(GSocketConnection* socket) {
  const AppNumber number = ++lastNumber_;
  AppConnection::Owner& hears = *this;
  const auto connection = std::make_shared<AppConnection>(hears, number, socket);
  connections_[number] = connection;
  owner_.applicationCame(number);
  connection->start();
}

void AppSockets::send(AppNumber application, const zeph::ZephMsg& message,
                      const Delivery& delivery) {
  const auto found = connections_.find(application);
  if (found == connections_.end()) return;
  found->second->send(message.SerializeAsString(), delivery);
}

void AppSockets::drop(AppNumber application) { refuse(application, ""); }

// Parsed in parts and tested afterwards, since a plain parse prints its own complaint about a
// missing field on standard error.
void AppSockets::payloadArrived(AppNumber application, const std::string& payload) {
  zeph::ZephMsg message;
  if (!message.ParsePartialFromString(payload)) {
    refuse(application,
           "sent a frame of " + std::to_string(payload.size()) + " bytes that is not a message");
  } else if (!message.IsInitialized()) {
    refuse(application, "sent a message without " + message.InitializationErrorString());
  } else {
    owner_.messageArrived(application, std::move(message));
  }
}

void AppSockets::refuse(AppNumber application, const std::string& trouble) {
  const auto found = connections_.find(application);
  if (found != connections_.end()) found->second->close();
  connectionEnded(application, trouble);
}

void AppSockets::connectionEnded(AppNumber application, const std::string& trouble) {
  connections_.erase(application);
  owner_.applicationLeft(application, trouble);
}

}  // namespace morvik::devkit
