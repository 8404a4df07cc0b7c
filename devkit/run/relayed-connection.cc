// Non-blocking sockets, one source for each direction.
#include "run/relayed-connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <utility>

namespace morvik::devkit {
namespace {

std::uint16_t remotePort(GSocketConnection* connection) {
  const GOwned<GSocketAddress> address(g_socket_connection_get_remote_address(connection, nullptr));
  return address ? g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address.get())) : 0;
}

// Small pieces must not wait for each other: that would put together what was sent apart.
void prepareSocket(GSocket* socket) {
  g_socket_set_blocking(socket, FALSE);
  g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
}

// A close that the other side sees as a reset.
void resetSocket(GSocketConnection* connection) {
  if (connection == nullptr) return;
  GSocket* socket = g_socket_connection_get_socket(connection);
  const linger now{.l_onoff = 1, .l_linger = 0};
  setsockopt(g_socket_get_fd(socket), SOL_SOCKET, SO_LINGER, &now, sizeof(now));
  g_socket_close(socket, nullptr);
}

}  // namespace

void FrameTap::hear(std::string_view bytes) {
  if (lost_) return;
  frames_.feed(bytes);
  while (const auto payload = frames_.next()) {
    zeph::ZephMsg message;
    if (message.ParsePartialFromString(*payload) && message.IsInitialized()) {
      message_(std::move(message));
    } else {
      trouble_("sent a frame of " + std::to_string(payload->size()) +
               " bytes that is not a message; it is passed on");
    }
  }
  if (const auto length = frames_.brokenBy()) {
    lost_ = true;
    trouble_("announced a frame of " + std::to_string(*length) +
             " bytes; what follows is passed on and not shown");
  }
}

RelayedConnection::RelayedConnection(Owner& owner, AppNumber number, GSocketConnection* application)
    : owner_(&owner),
      number_(number),
      applicationPort_(remotePort(application)),
      application_(G_SOCKET_CONNECTION(g_object_ref(application))),
      cancellable_(g_cancellable_new()),
      up_{.connection = this,
          .whose = "the application",
          .tap = FrameTap(
              [this](zeph::ZephMsg message) {
                if (owner_ != nullptr) owner_->receivedFrom(number_, std::move(message));
              },
              [this](const std::string& text) { tell(text); })},
      down_{.connection = this,
            .whose = "the server",
            .tap = FrameTap(
                [this](zeph::ZephMsg message) {
                  if (owner_ != nullptr) owner_->sentTo(number_, std::move(message));
                },
                [this](const std::string& text) { tell("the server " + text); })} {}

RelayedConnection::~RelayedConnection() { reset(); }

void RelayedConnection::connectTo(GSocketConnectable* server) {
  const GOwned<GSocketClient> client(g_socket_client_new());
  g_socket_client_set_enable_proxy(client.get(), FALSE);
  g_socket_client_connect_async(client.get(), server, cancellable_.get(), onConnected,
                                new std::shared_ptr<RelayedConnection>(shared_from_this()));
}

void RelayedConnection::onConnected(GObject* client, GAsyncResult* result, gpointer kept) {
  const std::unique_ptr<std::shared_ptr<RelayedConnection>> self(
      static_cast<std::shared_ptr<RelayedConnection>*>(kept));
  GErrorOwned error;
  const GOwned<GSocketConnection> server(
      g_socket_client_connect_finish(G_SOCKET_CLIENT(client), result, error.out()));
  if ((*self)->owner_ == nullptr) return;
  if (!server) {
    const std::string why = error.text();
    return (*self)->fail("the server cannot be reached: " + why, ServerLoss::kMissing, why);
  }
  (*self)->begin(server.get());
}

void RelayedConnection::begin(GSocketConnection* server) {
  server_.reset(G_SOCKET_CONNECTION(g_object_ref(server)));
  GSocket* const here = g_socket_connection_get_socket(application_.get());
  GSocket* const there = g_socket_connection_get_socket(server);
  prepare(up_, here, there);
  prepare(down_, there, here);
}

void RelayedConnection::prepare(Flow& flow, GSocket* from, GSocket* to) {
  prepareSocket(from);
  flow.from = from;
  flow.to = to;
  await(flow, G_IO_IN);
}

// At most one source a flow: it either reads or writes.
void RelayedConnection::await(Flow& flow, GIOCondition condition) {
  if (flow.source) g_source_destroy(flow.source.get());
  flow.source.reset(
      g_socket_create_source(condition == G_IO_IN ? flow.from : flow.to, condition, nullptr));
  g_source_set_callback(flow.source.get(), G_SOURCE_FUNC(onReady), &flow, nullptr);
  g_source_attach(flow.source.get(), g_main_context_get_thread_default());
}

// Both steps may end the connection, which then is held only by this call.
gboolean RelayedConnection::onReady(GSocket* socket, GIOCondition /*condition*/, gpointer flow) {
  auto& ready = *static_cast<Flow*>(flow);
  const auto self = ready.connection->shared_from_this();
  if (socket == ready.from && ready.begin == ready.end && !self->readSome(ready)) {
    return G_SOURCE_CONTINUE;
  }
  if (self->owner_ == nullptr || ready.over) return G_SOURCE_REMOVE;
  if (!self->writeSome(ready)) return G_SOURCE_REMOVE;
  const bool reads = socket == ready.from;
  const bool written = ready.begin == ready.end;
  if (reads == written) return G_SOURCE_CONTINUE;
  self->await(ready, written ? G_IO_IN : G_IO_OUT);
  return G_SOURCE_REMOVE;
}

// False when there is nothing to read yet.
bool RelayedConnection::readSome(Flow& flow) {
  GErrorOwned error;
  const gssize count =
      g_socket_receive(flow.from, flow.bytes.data(), flow.bytes.size(), nullptr, error.out());
  if (count < 0 && error.is(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) return false;
  if (count < 0) {
    breakOff(flow, error.text());
  } else if (count == 0) {
    endOfStream(flow);
  } else {
    flow.begin = 0;
    flow.end = static_cast<std::size_t>(count);
    flow.tap.hear({flow.bytes.data(), flow.end});
  }
  return true;
}

// False when the connection is over.
bool RelayedConnection::writeSome(Flow& flow) {
  if (flow.begin == flow.end) return true;
  GErrorOwned error;
  const gssize count = g_socket_send(flow.to, flow.bytes.data() + flow.begin, flow.end - flow.begin,
                                     nullptr, error.out());
  if (count >= 0) flow.begin += static_cast<std::size_t>(count);
  if (count >= 0 || error.is(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) return true;
  breakOff(&flow == &up_ ? down_ : up_, error.text());
  return false;
}

// The other direction goes on: only who has said all closes its side.
void RelayedConnection::endOfStream(Flow& flow) {
  flow.over = true;
  if (flow.source) g_source_destroy(flow.source.get());
  g_socket_shutdown(flow.to, FALSE, TRUE, nullptr);
  if (&flow == &down_ && !up_.over) {
    const char* where = flow.tap.isInsideFrame() ? " inside a frame" : "";
    tell(std::string("the server ended the connection") + where, ServerLoss::kEnded);
  }
  if (up_.over && down_.over) finish();
}

void RelayedConnection::tell(const std::string& text, ServerLoss loss, const std::string& why) {
  if (owner_ != nullptr) owner_->trouble({number_, text, loss, why});
}

// By the side that the flow comes from.
void RelayedConnection::breakOff(const Flow& flow, const std::string& why) {
  fail(std::string(flow.whose) + " broke off the connection: " + why,
       &flow == &down_ ? ServerLoss::kReset : ServerLoss::kNone, why);
}

// Told while the application's connection stands: only then its process can be found.
void RelayedConnection::fail(const std::string& text, ServerLoss loss, const std::string& why) {
  tell(text, loss, why);
  Owner* owner = std::exchange(owner_, nullptr);
  reset();
  if (owner != nullptr) owner->connectionEnded(number_);
}

void RelayedConnection::finish() {
  Owner* owner = std::exchange(owner_, nullptr);
  g_io_stream_close(G_IO_STREAM(application_.get()), nullptr, nullptr);
  g_io_stream_close(G_IO_STREAM(server_.get()), nullptr, nullptr);
  if (owner != nullptr) owner->connectionEnded(number_);
}

void RelayedConnection::reset() {
  owner_ = nullptr;
  for (Flow* flow : {&up_, &down_}) {
    if (flow->source) g_source_destroy(flow->source.get());
  }
  g_cancellable_cancel(cancellable_.get());
  resetSocket(application_.get());
  resetSocket(server_.get());
}

}  // namespace morvik::devkit
