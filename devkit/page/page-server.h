// The page's server: gives the embedded files and opens the page's sockets, to those who know the
// address.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "device/owned.h"
#include "page/admission.h"

namespace morvik::devkit {

/// HTTP on 127.0.0.1, on the thread-default main context of the one who makes it.
class PageServer {
 public:
  enum class Failure { kPortBusy, kOther };
  /// Gets the socket of each page that opens one, once it is open.
  using OnSocket = std::function<void(SoupWebsocketConnection* connection)>;

  explicit PageServer(OnSocket onSocket);
  ~PageServer();
  PageServer(const PageServer&) = delete;
  PageServer& operator=(const PageServer&) = delete;

  /// Port 0 takes a free one. Called once. Gives the reason when it cannot listen, and its text in
  /// `text`.
  [[nodiscard]] std::optional<Failure> listen(std::uint16_t port, std::string& text);

  /// The address that opens the page, secret token and all; valid after a successful `listen`.
  std::string address() const { return admission_->address(); }

 private:
  static void onHeaders(SoupServer* server, SoupServerMessage* message, const char* path,
                        GHashTable* query, gpointer self);
  static void onWebSocket(SoupServer* server, SoupServerMessage* message, const char* path,
                          SoupWebsocketConnection* connection, gpointer self);
  void addHandlers();
  std::string socketPath() const { return "/" + admission_->token() + "/socket"; }
  void setHeaders(SoupMessageHeaders* headers) const;

  OnSocket onSocket_;
  GOwned<SoupServer> server_;
  std::optional<Admission> admission_;  // known once it listens
};

}  // namespace morvik::devkit
