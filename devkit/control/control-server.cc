// The listening socket, and the connections to it.
#include "control/control-server.h"

#include <gio/gunixsocketaddress.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "control/control-folder.h"

namespace morvik::devkit {

namespace fs = std::filesystem;

ControlServer::ControlServer(ControlSource source)
    : source_(std::move(source)), service_(g_socket_service_new()) {
  g_signal_connect(service_.get(), "incoming", G_CALLBACK(onIncoming), this);
}

ControlServer::~ControlServer() {
  g_signal_handlers_disconnect_by_data(service_.get(), this);
  g_socket_service_stop(service_.get());
  g_socket_listener_close(G_SOCKET_LISTENER(service_.get()));
  if (!socket_.empty()) unlink(socket_.c_str());
  for (const auto& [key, connection] : connections_) connection->close();
}

// Under another name until it listens: those who look for tools take one that does not for a
// leftover.
std::optional<std::string> ControlServer::listen(const fs::path& folder) {
  const fs::path socket = folder / (std::to_string(getpid()) + ".sock");
  const fs::path fresh = socket.string() + ".new";
  unlink(fresh.c_str());
  const GOwned<GSocketAddress> address(g_unix_socket_address_new(fresh.c_str()));
  GErrorOwned error;
  if (g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), address.get(),
                                    G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_DEFAULT, nullptr,
                                    nullptr, error.out()) == FALSE) {
    return error.text();
  }
  if (chmod(fresh.c_str(), S_IRUSR | S_IWUSR) != 0 || rename(fresh.c_str(), socket.c_str()) != 0) {
    return std::strerror(errno);
  }
  socket_ = socket;
  g_socket_service_start(service_.get());
  return std::nullopt;
}

gboolean ControlServer::onIncoming(GSocketService* /*service*/, GSocketConnection* connection,
                                   GObject* /*source*/, gpointer server) {
  static_cast<ControlServer*>(server)->accept(connection);
  return TRUE;
}

void ControlServer::accept(GSocketConnection* socket) {
  if (!isOwnPeer(g_socket_get_fd(g_socket_connection_get_socket(socket)))) return;
  const auto connection =
      std::make_shared<ControlConnection>(static_cast<ControlConnection::Owner&>(*this), socket);
  connections_[connection.get()] = connection;
  connection->start();
}

std::unique_ptr<ControlServer> offerControl(ControlSource source, std::string& text) {
  std::string trouble;
  const auto folder = controlFolder(trouble);
  auto server = std::make_unique<ControlServer>(std::move(source));
  if (folder) trouble = server->listen(*folder).value_or("");
  if (trouble.empty()) return server;
  text = "morvik-dev sim cannot reach this: " + trouble + '\n';
  return nullptr;
}

}  // namespace morvik::devkit
