// libsoup's server, and what every answer of it says to the browser.
#include "page/page-server.h"

#include <memory>
#include <utility>

#include "page/page-files.h"

namespace morvik::devkit {
namespace {

using Uris = std::unique_ptr<GSList, decltype([](GSList* uris) {
                               g_slist_free_full(uris, [](gpointer uri) {
                                 g_uri_unref(static_cast<GUri*>(uri));
                               });
                             })>;

std::uint16_t portOf(SoupServer* server) {
  const Uris uris(soup_server_get_uris(server));
  return static_cast<std::uint16_t>(g_uri_get_port(static_cast<GUri*>(uris->data)));
}

std::optional<std::string_view> headerOf(SoupServerMessage* message, const char* name) {
  const char* value =
      soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
  return value != nullptr ? std::optional<std::string_view>(value) : std::nullopt;
}

guint statusFor(Admission::Verdict verdict) {
  switch (verdict) {
    case Admission::Verdict::kWrongMethod:
      return SOUP_STATUS_METHOD_NOT_ALLOWED;
    case Admission::Verdict::kForeign:
      return SOUP_STATUS_FORBIDDEN;
    default:
      return SOUP_STATUS_NOT_FOUND;
  }
}

// A refused request gets no more than its status, and what it still has to say is not kept.
void refuse(SoupServerMessage* message, guint status) {
  SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
  if (status == SOUP_STATUS_METHOD_NOT_ALLOWED) {
    soup_message_headers_replace(headers, "Allow", "GET, HEAD");
  }
  soup_message_headers_replace(headers, "Connection", "close");
  soup_server_message_set_status(message, status, nullptr);
}

// A browser learns of a module from the one that wants it. Told of all at once it need not wait.
void announceModules(SoupMessageHeaders* headers) {
  for (const std::string& module : pageModules()) {
    soup_message_headers_append(headers, "Link", ("<" + module + ">; rel=modulepreload").c_str());
  }
}

void give(SoupServerMessage* message, std::string_view name) {
  const auto file = pageFile(name);
  if (!file) return refuse(message, SOUP_STATUS_NOT_FOUND);
  SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
  soup_message_headers_set_content_type(headers, file->type, nullptr);
  if (std::string_view(file->type).starts_with("text/html")) announceModules(headers);
  soup_message_body_append_bytes(soup_server_message_get_response_body(message),
                                 file->content.get());
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
}

}  // namespace

PageServer::PageServer(OnSocket onSocket)
    : onSocket_(std::move(onSocket)), server_(soup_server_new(nullptr, nullptr)) {
  // Everything stays on this machine: to compress it costs time and room, and gains nothing.
  soup_server_remove_websocket_extension(server_.get(), SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
}

PageServer::~PageServer() { soup_server_disconnect(server_.get()); }

std::optional<PageServer::Failure> PageServer::listen(std::uint16_t port, std::string& text) {
  std::string token = freshToken();
  if (token.empty()) {
    text = "the system gives no random numbers";
    return Failure::kOther;
  }
  const GOwned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const GOwned<GSocketAddress> address(g_inet_socket_address_new(loopback.get(), port));
  GErrorOwned error;
  if (soup_server_listen(server_.get(), address.get(), SoupServerListenOptions{}, error.out()) ==
      FALSE) {
    text = error.text();
    return error.is(G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE) ? Failure::kPortBusy : Failure::kOther;
  }
  admission_.emplace(std::move(token), portOf(server_.get()));
  addHandlers();
  return std::nullopt;
}

// libsoup finds handlers by how a path begins, so the one of the socket hears of "socket.js" as
// well. That is why files are given before it comes to that, by a handler that all requests meet.
void PageServer::addHandlers() {
  const std::string socket = socketPath();
  for (const char* path : {static_cast<const char*>(nullptr), socket.c_str()}) {
    soup_server_add_early_handler(server_.get(), path, onHeaders, this, nullptr);
  }
  soup_server_add_websocket_handler(server_.get(), socket.c_str(), nullptr, nullptr, onWebSocket,
                                    this, nullptr);
}

// The address is a secret, so nothing of it leaves the page; and nothing foreign comes in.
void PageServer::setHeaders(SoupMessageHeaders* headers) const {
  const std::string port = std::to_string(admission_->port());
  const std::string policy =
      "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; "
      "connect-src 'self' ws://127.0.0.1:" +
      port + " ws://localhost:" + port +
      "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
  const std::pair<const char*, const char*> all[] = {
      {"Content-Security-Policy", policy.c_str()},
      {"X-Content-Type-Options", "nosniff"},
      {"Referrer-Policy", "no-referrer"},
      {"Cache-Control", "no-store"},
      {"Cross-Origin-Opener-Policy", "same-origin"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
  };
  for (const auto& [name, value] : all) soup_message_headers_replace(headers, name, value);
}

// Called when the headers are there and the body, if any, is still to come.
void PageServer::onHeaders(SoupServer* /*server*/, SoupServerMessage* message, const char* path,
                           GHashTable* /*query*/, gpointer self) {
  const auto* server = static_cast<PageServer*>(self);
  soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
  server->setHeaders(soup_server_message_get_response_headers(message));
  const Admission::Request request{soup_server_message_get_method(message), path,
                                   headerOf(message, "Host"), headerOf(message, "Origin")};
  const bool opensSocket = path == server->socketPath();
  const auto verdict =
      opensSocket ? server->admission_->forSocket(request) : server->admission_->forFile(request);
  if (verdict != Admission::Verdict::kWelcome) return refuse(message, statusFor(verdict));
  if (!opensSocket) give(message, *server->admission_->nameIn(path));
}

void PageServer::onWebSocket(SoupServer* /*server*/, SoupServerMessage* /*message*/,
                             const char* /*path*/, SoupWebsocketConnection* connection,
                             gpointer self) {
  static_cast<PageServer*>(self)->onSocket_(connection);
}

}  // namespace morvik::devkit
