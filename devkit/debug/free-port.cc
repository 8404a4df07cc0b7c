// Found by listening for a moment.
#include "debug/free-port.h"

#include "device/owned.h"

namespace morvik::devkit {
namespace {

// Somebody who has so many debuggers open gets a word about it.
constexpr int kMostTried = 100;

std::optional<std::uint16_t> listenOnce(std::uint16_t port, std::string& trouble) {
  const GOwned<GSocketListener> listener(g_socket_listener_new());
  const GOwned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const GOwned<GSocketAddress> address(g_inet_socket_address_new(loopback.get(), port));
  GSocketAddress* effective = nullptr;
  GErrorOwned error;
  if (g_socket_listener_add_address(listener.get(), address.get(), G_SOCKET_TYPE_STREAM,
                                    G_SOCKET_PROTOCOL_TCP, nullptr, &effective,
                                    error.out()) == FALSE) {
    trouble = "port " + std::to_string(port) + ": " + error.text();
    return std::nullopt;
  }
  const GOwned<GSocketAddress> owned(effective);
  g_socket_listener_close(listener.get());
  return g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(effective));
}

}  // namespace

std::optional<std::uint16_t> freePort(std::uint16_t port, bool orNext, std::string& trouble) {
  const int tries = orNext && port != 0 ? kMostTried : 1;
  for (int candidate = port; candidate < port + tries && candidate <= 65535; ++candidate) {
    if (const auto free = listenOnce(static_cast<std::uint16_t>(candidate), trouble)) return free;
  }
  return std::nullopt;
}

}  // namespace morvik::devkit
