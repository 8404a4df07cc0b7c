// Sockets on the test's loop.
#include "page-client.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace morvik::test {

using namespace devkit;

namespace {

constexpr std::string_view kScheme = "http://";

int connectTo(std::uint16_t port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int small = 4096;
  setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof(small));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  return fd;
}

}  // namespace

std::string originOf(const std::string& address) {
  return address.substr(0, address.find('/', kScheme.size()));
}

std::string pathOf(const std::string& address) { return address.substr(originOf(address).size()); }

std::uint16_t portOf(const std::string& address) {
  return static_cast<std::uint16_t>(
      std::stoi(address.substr(address.find(':', kScheme.size()) + 1)));
}

std::string requestHead(const std::string& line, std::uint16_t port, const std::string& more) {
  return line + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n" + more + "\r\n";
}

BareClient::BareClient(Loop& loop, std::uint16_t port)
    : loop_(loop),
      fd_(connectTo(port)),
      source_(devkit::whenReadable(fd_, [this] { return take(); })) {}

BareClient::~BareClient() {
  stopReading();
  close(fd_);
}

void BareClient::send(const std::string& bytes) {
  EXPECT_EQ(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

std::string BareClient::waitFor(const std::string& text) {
  EXPECT_TRUE(loop_.runUntil([&] { return received_.find(text) != std::string::npos; }))
      << text << " did not come: " << received_;
  return received_;
}

std::string BareClient::waitForEnd() {
  EXPECT_TRUE(loop_.runUntil([this] { return ended_; })) << received_;
  return received_;
}

void BareClient::stopReading() { source_.reset(); }

bool BareClient::take() {
  std::array<char, 4096> bytes{};
  const ssize_t count = recv(fd_, bytes.data(), bytes.size(), 0);
  ended_ = count <= 0;
  if (ended_) return false;
  received_.append(bytes.data(), static_cast<std::size_t>(count));
  return true;
}

DeafPage::DeafPage(Loop& loop, const std::string& address) : client_(loop, portOf(address)) {
  client_.send(requestHead("GET " + pathOf(address) + "socket", portOf(address),
                           "Origin: " + originOf(address) +
                               "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                               "Sec-WebSocket-Version: 13\r\n"
                               "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"));
  client_.waitFor("\r\n\r\n");
  client_.stopReading();
}

// One frame with a mask of zeros, which changes nothing.
void DeafPage::send(const std::string& text, int times) {
  ASSERT_LT(text.size(), 126U);
  const std::string frame =
      std::string("\x81", 1) + static_cast<char>(0x80 | text.size()) + std::string(4, '\0') + text;
  std::string frames;
  for (int i = 0; i < times; ++i) frames += frame;
  client_.send(frames);
}

SocketClient::SocketClient(Loop& loop, const std::string& address, const std::string& origin)
    : loop_(loop), session_(soup_session_new()) {
  const GOwned<SoupMessage> message(soup_message_new("GET", address.c_str()));
  soup_session_websocket_connect_async(session_.get(), message.get(),
                                       origin.empty() ? nullptr : origin.c_str(), nullptr,
                                       G_PRIORITY_DEFAULT, nullptr, onConnected, this);
  EXPECT_TRUE(loop.runUntil([this] { return answered_; }));
}

SocketClient::~SocketClient() {
  if (connection_) g_signal_handlers_disconnect_by_data(connection_.get(), this);
}

void SocketClient::onConnected(GObject* session, GAsyncResult* result, gpointer client) {
  auto* self = static_cast<SocketClient*>(client);
  self->answered_ = true;
  auto* connection = soup_session_websocket_connect_finish(SOUP_SESSION(session), result, nullptr);
  if (connection == nullptr) return;
  self->connection_.reset(connection);
  soup_websocket_connection_set_max_incoming_payload_size(connection, 0);
  g_signal_connect(connection, "message", G_CALLBACK(onMessage), self);
  g_signal_connect(connection, "closed", G_CALLBACK(onClosed), self);
}

void SocketClient::onMessage(SoupWebsocketConnection* /*connection*/, int /*type*/, GBytes* message,
                             gpointer client) {
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(message, &size));
  auto* self = static_cast<SocketClient*>(client);
  self->frames_.emplace_back(bytes, size);
  ++self->arrived_;
}

void SocketClient::onClosed(SoupWebsocketConnection* /*connection*/, gpointer client) {
  static_cast<SocketClient*>(client)->closed_ = true;
}

std::string SocketClient::receiveText() {
  const bool came = loop_.runUntil([this] { return !frames_.empty(); });
  EXPECT_TRUE(came) << "no frame came";
  if (!came) return "";
  std::string frame = std::move(frames_.front());
  frames_.pop_front();
  return frame;
}

Json SocketClient::receive() {
  const std::string frame = receiveText();
  return frame.empty() ? Json() : Json::parse(frame);
}

PageClient::PageClient(Loop& loop, const std::string& address, const std::string& origin)
    : SocketClient(loop, address + "socket",
                   origin == "http://127.0.0.1" ? originOf(address) : origin) {}

Json PageClient::receive(const std::string& type) {
  Json frame = receive();
  while (frame.is_object() && frame["type"] != type) frame = receive();
  return frame;
}

void SocketClient::sendText(const std::string& text) {
  soup_websocket_connection_send_text(connection_.get(), text.c_str());
}

void SocketClient::sendBytes(const std::string& bytes) {
  soup_websocket_connection_send_binary(connection_.get(), bytes.data(), bytes.size());
}

Json PageClient::ask(const Json& frame) {
  send(frame);
  return receive("outcome");
}

std::size_t PageClient::seeAll() {
  const std::size_t count = dropAll();
  send({{"type", "seen"}, {"seq", arrived()}});
  return count;
}

std::size_t SocketClient::dropAll() {
  const std::size_t count = frames_.size();
  frames_.clear();
  return count;
}

int SocketClient::closeCode() {
  EXPECT_TRUE(loop_.runUntil([this] { return closed_; }));
  return soup_websocket_connection_get_close_code(connection_.get());
}

}  // namespace morvik::test
