// Asynchronous reads and writes of one socket. Each pending one holds the connection alive.
#include "server/app-connection.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>

#include <string_view>

namespace morvik::devkit {
namespace {

constexpr std::chrono::milliseconds kNoPause{0};

}  // namespace

AppConnection::AppConnection(Owner& owner, AppNumber number, GSocketConnection* socket)
    : owner_(&owner),
      number_(number),
      socket_(G_SOCKET_CONNECTION(g_object_ref(socket))),
      cancellable_(g_cancellable_new()),
      input_() {
  // An answer and the event behind it are two small writes; the second must not wait for the
  // application's acknowledgement of the first.
  g_socket_set_option(g_socket_connection_get_socket(socket), IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
}

void* AppConnection::keep() { return new Kept(shared_from_this()); }

AppConnection::Kept AppConnection::takeKept(void* kept) {
  const std::unique_ptr<Kept> taken(static_cast<Kept*>(kept));
  return *taken;
}

void AppConnection::start() { read(); }

void AppConnection::read() {
  g_input_stream_read_async(g_io_stream_get_input_stream(G_IO_STREAM(socket_.get())), input_.data(),
                            input_.size(), G_PRIORITY_DEFAULT, cancellable_.get(), onRead, keep());
}

void AppConnection::onRead(GObject* stream, GAsyncResult* result, void* kept) {
  const Kept self = takeKept(kept);
  GErrorOwned error;
  const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, error.out());
  if (self->owner_ == nullptr) return;
  if (count > 0) {
    self->take(static_cast<std::size_t>(count));
  } else if (count < 0) {
    self->end(error.text());
  } else {
    self->end(self->frames_.isInsideFrame() ? "the connection ended inside a frame" : "");
  }
}

// The system puts an acknowledgement off and forgets that it was asked not to. Who waits until
// everything has arrived, as tests do, would wait for that.
void AppConnection::acknowledge() {
  g_socket_set_option(g_socket_connection_get_socket(socket_.get()), IPPROTO_TCP, TCP_QUICKACK, 1,
                      nullptr);
}

void AppConnection::take(std::size_t count) {
  acknowledge();
  frames_.feed(std::string_view(input_.data(), count));
  while (const auto payload = frames_.next()) {
    // cppcheck-suppress nullPointerRedundantCheck; whoever hears of it may end this connection
    owner_->payloadArrived(number_, *payload);
    if (owner_ == nullptr) return;
  }
  if (const auto length = frames_.brokenBy()) {
    end("announced a frame of " + std::to_string(*length) + " bytes, more than " +
        std::to_string(kMaxPayload));
  } else {
    read();
  }
}

void AppConnection::send(const std::string& payload, const Delivery& delivery) {
  if (owner_ == nullptr || overflows_) return;
  const bool idle = unsent_.empty();
  const std::string frame = frameOf(payload);
  const std::size_t size = delivery.pieceSize > 0 ? delivery.pieceSize : frame.size();
  for (std::size_t at = 0; at < frame.size(); at += size) {
    unsent_.push_back({frame.substr(at, size), at > 0 ? delivery.pause : kNoPause});
  }
  unsentBytes_ += frame.size();
  if (idle) {
    writeNext();
  } else if (unsentBytes_ > kMaxUnsent) {
    overflows_ = true;
    callAfter(kNoPause, onOverflow);
  }
}

bool AppConnection::isDelivering() const {
  int unacknowledged = 0;
  const int socket = g_socket_get_fd(g_socket_connection_get_socket(socket_.get()));
  return !unsent_.empty() || (ioctl(socket, SIOCOUTQ, &unacknowledged) == 0 && unacknowledged > 0);
}

std::uint16_t AppConnection::remotePort() const {
  const GOwned<GSocketAddress> address(
      g_socket_connection_get_remote_address(socket_.get(), nullptr));
  return address ? g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address.get())) : 0;
}

// One frame to a write: put together, a full socket could cut them inside a length.
void AppConnection::writeNext() {
  g_output_stream_write_all_async(g_io_stream_get_output_stream(G_IO_STREAM(socket_.get())),
                                  unsent_.front().bytes.data(), unsent_.front().bytes.size(),
                                  G_PRIORITY_DEFAULT, cancellable_.get(), onWritten, keep());
}

void AppConnection::onWritten(GObject* stream, GAsyncResult* result, void* kept) {
  const Kept self = takeKept(kept);
  GErrorOwned error;
  const gboolean written =
      g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, error.out());
  if (self->owner_ == nullptr) return;
  if (written == FALSE) {
    self->end(error.text());
    return;
  }
  self->unsentBytes_ -= self->unsent_.front().bytes.size();
  self->unsent_.pop_front();
  if (self->unsent_.empty()) return;
  if (self->unsent_.front().pause > kNoPause) {
    self->callAfter(self->unsent_.front().pause, onPauseOver);
  } else {
    self->writeNext();
  }
}

// The source holds the connection until it is due, as a pending write would.
void AppConnection::callAfter(std::chrono::milliseconds pause, GSourceFunc what) {
  const GSourceOwned source(g_timeout_source_new(static_cast<guint>(pause.count())));
  g_source_set_callback(source.get(), what, keep(), nullptr);
  g_source_attach(source.get(), g_main_context_get_thread_default());
}

gboolean AppConnection::onPauseOver(void* kept) {
  const Kept self = takeKept(kept);
  if (self->owner_ != nullptr) self->writeNext();
  return G_SOURCE_REMOVE;
}

gboolean AppConnection::onOverflow(void* kept) {
  const Kept self = takeKept(kept);
  if (self->owner_ != nullptr) self->end("does not read what it is sent");
  return G_SOURCE_REMOVE;
}

void AppConnection::end(const std::string& trouble) {
  Owner* owner = owner_;
  close();
  owner->connectionEnded(number_, trouble);
}

// Shut down rather than closed, since a pending read still watches the descriptor; that is closed
// with the last reference.
void AppConnection::close() {
  owner_ = nullptr;
  g_socket_shutdown(g_socket_connection_get_socket(socket_.get()), TRUE, TRUE, nullptr);
  g_cancellable_cancel(cancellable_.get());
}

}  // namespace morvik::devkit
