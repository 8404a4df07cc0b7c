// libsoup's server in a thread.
#include "debug/debug-server.h"

#include <glib-unix.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>
#include <utility>

namespace morvik::devkit {
namespace {

// A message from a debugger may hold the source of a script.
constexpr std::size_t kLargestFrame = std::size_t{16} * 1024 * 1024;

// How long the end of an application may wait for its debugger.
constexpr std::chrono::milliseconds kPatienceAtEnd{500};

constexpr std::string_view kToolsOrigin = "devtools://";

constexpr const char* kTaken =
    "A debugger is attached to this application already. It takes one at a time.\n";

std::optional<std::string_view> header(SoupServerMessage* message, const char* name) {
  const char* value =
      soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
  return value != nullptr ? std::optional<std::string_view>(value) : std::nullopt;
}

void refuseRequest(SoupServerMessage* message, guint status, const char* text) {
  soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection",
                               "close");
  soup_server_message_set_response(message, "text/plain; charset=utf-8", SOUP_MEMORY_STATIC, text,
                                   std::char_traits<char>::length(text));
  soup_server_message_set_status(message, status, nullptr);
}

std::uint16_t listeningPortOf(SoupServer* server) {
  GSList* uris = soup_server_get_uris(server);
  const int port = g_uri_get_port(static_cast<GUri*>(uris->data));
  g_slist_free_full(uris, [](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });
  return static_cast<std::uint16_t>(port);
}

// GIO has the whole process ignore SIGPIPE. An application is to end by it, as it does on a device,
// and GIO's own sockets do not need that.
class KeptBrokenPipe {
 public:
  KeptBrokenPipe() {
    sigaction(SIGPIPE, nullptr, &given_);
    g_type_class_unref(g_type_class_ref(G_TYPE_SOCKET));
  }
  ~KeptBrokenPipe() { sigaction(SIGPIPE, &given_, nullptr); }
  KeptBrokenPipe(const KeptBrokenPipe&) = delete;
  KeptBrokenPipe& operator=(const KeptBrokenPipe&) = delete;

 private:
  struct sigaction given_ {};
};

}  // namespace

DebugServer::DebugServer(DebugTarget target, ClientQueue& queue)
    : target_(std::move(target)), queue_(queue), context_(g_main_context_new()) {}

bool DebugServer::start(std::uint16_t port, int ports, std::string& trouble) {
  const KeptBrokenPipe kept;
  g_main_context_push_thread_default(context_.get());
  const bool listens = listen(port, ports, trouble);
  g_main_context_pop_thread_default(context_.get());
  if (!listens) return false;
  target_.port = listeningPortOf(server_.get());
  admission_.emplace(target_.id, target_.port);
  addHandlers();
  watchReaders();
  std::thread([this] { run(); }).detach();
  return true;
}

bool DebugServer::listen(std::uint16_t port, int ports, std::string& trouble) {
  server_.reset(soup_server_new(nullptr, nullptr));
  const GOwned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  for (int tried = 0; tried < ports; ++tried) {
    const int candidate = port == 0 ? 0 : port + tried;
    const GOwned<GSocketAddress> address(
        g_inet_socket_address_new(loopback.get(), static_cast<guint16>(candidate)));
    GErrorOwned error;
    if (soup_server_listen(server_.get(), address.get(), SoupServerListenOptions{}, error.out()) !=
        FALSE) {
      return true;
    }
    trouble = error.text();
    if (!error.is(G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE)) return false;
  }
  return false;
}

// Everything stays on this machine: to compress it costs time and gains nothing.
void DebugServer::addHandlers() {
  soup_server_remove_websocket_extension(server_.get(), SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
  const std::string socket = socketPath();
  for (const char* path : {static_cast<const char*>(nullptr), socket.c_str()}) {
    soup_server_add_early_handler(server_.get(), path, onHeaders, this, nullptr);
  }
  soup_server_add_websocket_handler(server_.get(), socket.c_str(), nullptr, nullptr, onWebSocket,
                                    this, nullptr);
}

// Whoever has started the application may be gone, killed perhaps. A file never tells that, a pipe,
// a socket and a terminal do.
void DebugServer::watchReaders() {
  const GSourceOwned source(
      g_unix_fd_source_new(STDERR_FILENO, static_cast<GIOCondition>(G_IO_HUP | G_IO_ERR)));
  constexpr GUnixFDSourceFunc kGone = [](gint /*fd*/, GIOCondition /*what*/, gpointer self) {
    static_cast<DebugServer*>(self)->queue_.put({.kind = ClientEvent::Kind::kForsaken, .text = ""});
    return G_SOURCE_REMOVE;
  };
  g_source_set_callback(source.get(), G_SOURCE_FUNC(kGone), this, nullptr);
  g_source_attach(source.get(), context_.get());
}

void DebugServer::run() {
  g_main_context_push_thread_default(context_.get());
  for (;;) g_main_context_iteration(context_.get(), TRUE);
}

// Told of a web page by its Origin, and of a foreign name that was made to point at this machine by
// Host; developer tools of a browser tell an Origin of their own. Called when the headers are there
// and the body, if any, is still to come.
void DebugServer::onHeaders(SoupServer* /*server*/, SoupServerMessage* message, const char* path,
                            GHashTable* /*query*/, gpointer self) {
  auto* server = static_cast<DebugServer*>(self);
  soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
  const auto host = header(message, "Host");
  const auto origin = header(message, "Origin");
  if (std::string_view(soup_server_message_get_method(message)) != "GET") {
    return refuseRequest(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "GET only.\n");
  }
  if (!host || !server->admission_->isOurs(*host) ||
      (origin && !origin->starts_with(kToolsOrigin))) {
    return refuseRequest(message, SOUP_STATUS_FORBIDDEN, "For debuggers of this machine only.\n");
  }
  server->answer(message, path);
}

void DebugServer::answer(SoupServerMessage* message, const std::string& path) {
  const bool taken = connection_ != nullptr;
  if (path == socketPath()) {
    if (taken) refuseRequest(message, SOUP_STATUS_CONFLICT, kTaken);
    return;
  }
  const auto text = discovered(path, target_, taken);
  if (!text) return refuseRequest(message, SOUP_STATUS_NOT_FOUND, "See /json/list.\n");
  soup_server_message_set_response(message, "application/json; charset=UTF-8", SOUP_MEMORY_COPY,
                                   text->data(), text->size());
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
}

// Two may have asked before either of them was let in.
void DebugServer::onWebSocket(SoupServer* /*server*/, SoupServerMessage* /*message*/,
                              const char* /*path*/, SoupWebsocketConnection* connection,
                              gpointer self) {
  auto* server = static_cast<DebugServer*>(self);
  if (server->connection_) {
    soup_websocket_connection_close(connection, SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, kTaken);
    return;
  }
  soup_websocket_connection_set_max_incoming_payload_size(connection, kLargestFrame);
  g_signal_connect(connection, "message", G_CALLBACK(onMessage), self);
  g_signal_connect(connection, "closed", G_CALLBACK(onClosed), self);
  server->connection_.reset(static_cast<SoupWebsocketConnection*>(g_object_ref(connection)));
  server->queue_.put({.kind = ClientEvent::Kind::kCame, .text = ""});
}

void DebugServer::onMessage(SoupWebsocketConnection* connection, int type, GBytes* message,
                            gpointer self) {
  if (type != SOUP_WEBSOCKET_DATA_TEXT) {
    soup_websocket_connection_close(connection, SOUP_WEBSOCKET_CLOSE_UNSUPPORTED_DATA,
                                    "The protocol is made of texts.");
    return;
  }
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(message, &size));
  static_cast<DebugServer*>(self)->queue_.put(
      {.kind = ClientEvent::Kind::kSaid, .text = std::string(size > 0 ? bytes : "", size)});
}

void DebugServer::onClosed(SoupWebsocketConnection* /*connection*/, gpointer self) {
  static_cast<DebugServer*>(self)->isGone();
}

void DebugServer::isGone() {
  g_signal_handlers_disconnect_by_data(connection_.get(), this);
  connection_.reset();
  queue_.put({.kind = ClientEvent::Kind::kLeft, .text = ""});
  const std::lock_guard lock(mutex_);
  closed_ = closing_;
  changed_.notify_all();
}

// In the order of the calls, which idle sources of one priority keep.
void DebugServer::later(std::function<void()> work) {
  using Work = std::function<void()>;
  const GSourceOwned source(g_idle_source_new());
  g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
  g_source_set_callback(
      source.get(),
      [](gpointer given) -> gboolean {
        (*static_cast<Work*>(given))();
        return G_SOURCE_REMOVE;
      },
      new Work(std::move(work)), [](gpointer given) { delete static_cast<Work*>(given); });
  g_source_attach(source.get(), context_.get());
}

void DebugServer::send(std::string message) {
  later([this, text = std::move(message)] { deliver(text); });
}

void DebugServer::deliver(const std::string& message) {
  if (!connection_) return;
  if (soup_websocket_connection_get_state(connection_.get()) != SOUP_WEBSOCKET_STATE_OPEN) return;
  soup_websocket_connection_send_text(connection_.get(), message.c_str());
}

// Until a time of day: the application's other clock is behind when it was paused.
void DebugServer::close() {
  std::unique_lock lock(mutex_);
  if (std::exchange(closing_, true)) return;
  later([this] { sendAway(); });
  changed_.wait_until(lock, std::chrono::system_clock::now() + kPatienceAtEnd,
                      [this] { return closed_; });
}

void DebugServer::sendAway() {
  if (connection_ &&
      soup_websocket_connection_get_state(connection_.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
    soup_websocket_connection_close(connection_.get(), SOUP_WEBSOCKET_CLOSE_GOING_AWAY,
                                    "The application has ended.");
    return;
  }
  const std::lock_guard lock(mutex_);
  closed_ = true;
  changed_.notify_all();
}

}  // namespace morvik::devkit
