// GIO's socket service.
#include "server/loopback-service.h"

#include <utility>

namespace morvik::devkit {

LoopbackService::LoopbackService(Incoming incoming)
    : incoming_(std::move(incoming)), service_(g_socket_service_new()) {
  g_signal_connect(service_.get(), "incoming", G_CALLBACK(onIncoming), this);
}

LoopbackService::~LoopbackService() {
  g_signal_handlers_disconnect_by_data(service_.get(), this);
  g_socket_service_stop(service_.get());
  g_socket_listener_close(G_SOCKET_LISTENER(service_.get()));
}

bool LoopbackService::listen(std::uint16_t port, GErrorOwned& error) {
  const GOwned<GSocketAddress> wanted(g_inet_socket_address_new_from_string("127.0.0.1", port));
  GSocketAddress* taken = nullptr;
  if (g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), wanted.get(),
                                    G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr, &taken,
                                    error.out()) == FALSE) {
    return false;
  }
  const GOwned<GSocketAddress> address(taken);
  port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(taken));
  g_socket_service_start(service_.get());
  return true;
}

int LoopbackService::onIncoming(GSocketService* /*service*/, GSocketConnection* connection,
                                GObject* /*source*/, void* self) {
  static_cast<LoopbackService*>(self)->incoming_(connection);
  return TRUE;
}

}  // namespace morvik::devkit
