// One WebSocket of libsoup.
#include "page/page-socket.h"

namespace morvik::devkit {

PageSocket::PageSocket(Owner& owner, Number number, SoupWebsocketConnection* connection)
    : owner_(owner),
      number_(number),
      connection_(static_cast<SoupWebsocketConnection*>(g_object_ref(connection))) {
  soup_websocket_connection_set_max_incoming_payload_size(connection, kLargestPageFrame);
  g_signal_connect(connection, "message", G_CALLBACK(onMessage), this);
  g_signal_connect(connection, "closed", G_CALLBACK(onClosed), this);
}

PageSocket::~PageSocket() { g_signal_handlers_disconnect_by_data(connection_.get(), this); }

void PageSocket::send(const std::string& text) {
  if (soup_websocket_connection_get_state(connection_.get()) != SOUP_WEBSOCKET_STATE_OPEN) return;
  soup_websocket_connection_send_text(connection_.get(), text.c_str());
}

void PageSocket::close(unsigned short code, const char* reason) {
  if (soup_websocket_connection_get_state(connection_.get()) != SOUP_WEBSOCKET_STATE_OPEN) return;
  soup_websocket_connection_close(connection_.get(), code, reason);
}

void PageSocket::onMessage(SoupWebsocketConnection* /*connection*/, int type, GBytes* message,
                           gpointer self) {
  auto* socket = static_cast<PageSocket*>(self);
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(message, &size));
  const bool isText = type == SOUP_WEBSOCKET_DATA_TEXT;
  // What is no text makes no sense either, and is answered as such.
  socket->owner_.frameArrived(socket->number_, isText && bytes != nullptr
                                                   ? std::string_view(bytes, size)
                                                   : std::string_view());
}

void PageSocket::onClosed(SoupWebsocketConnection* /*connection*/, gpointer self) {
  auto* socket = static_cast<PageSocket*>(self);
  socket->owner_.pageLeft(socket->number_);
}

}  // namespace morvik::devkit
