// The connection to the device server. No recovery: when it breaks, the application ends.
#include "channel/connection.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "channel/channel-functions.h"
#include "channel/dispatch.h"
#include "channel/frame.h"
#include "channel/message.h"
#include "host/morvik-data.h"
#include "host/owned.h"

namespace morvik {
namespace {

constexpr timeval kPatience = {0, 1000};  // one millisecond

bool lookUp(const char* host, sockaddr_in& address) {
  const hostent* entry = gethostbyname(host);
  if (entry == nullptr) {
    g_debug("nslookup failed on '%s'", host);
    return false;
  }
  std::memcpy(&address.sin_addr, entry->h_addr_list[0], sizeof address.sin_addr);
  return true;
}

bool establish(int socket, const char* host, std::int32_t port) {
  g_debug("connecting to: %s:%d", host, port);
  sockaddr_in address{};
  if (!lookUp(host, address)) return false;
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));  // the low 16 bits count
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return true;
  }
  g_warning("connect failed on '%s:%d' : %s", host, port, std::strerror(errno));
  return false;
}

void sendAll(int socket, const unsigned char* bytes, std::size_t length) {
  for (std::size_t sent = 0; sent < length;) {
    const ssize_t taken = send(socket, bytes + sent, length - sent, 0);
    if (taken == -1) g_error("send failed: %s", std::strerror(errno));
    sent += static_cast<std::size_t>(taken);
  }
}

bool messageWaits(int socket) {
  // A descriptor outside select's set cannot be waited for.
  if (socket < 0 || socket >= FD_SETSIZE) g_error("Failed to select socket");
  fd_set set;
  FD_ZERO(&set);
  FD_SET(socket, &set);
  timeval timeout = kPatience;
  if (select(socket + 1, &set, nullptr, nullptr, &timeout) < 0) g_error("Failed to select socket");
  return FD_ISSET(socket, &set) != 0;
}

std::uint32_t receiveLength(int socket) {
  // The write position moves a whole word for every byte received, on purpose: a length in one
  // piece is read correctly, a split one is not put together. Zeroes stand where it never writes.
  std::array<std::uint8_t, kFrameHeaderSize * kFrameHeaderSize> words{};
  for (std::size_t count = 0; count < kFrameHeaderSize;) {
    const ssize_t got =
        recv(socket, words.data() + count * kFrameHeaderSize, kFrameHeaderSize - count, 0);
    if (got < 1) g_error("Failed to receive bytes length from server");
    count += static_cast<std::size_t>(got);
  }
  return bodyLength(std::span(words).first<kFrameHeaderSize>());
}

MallocBytes receivePayload(int socket, std::size_t length) {
  MallocBytes buffer(static_cast<unsigned char*>(std::malloc(length > 0 ? length : 1)));
  // The server may announce more than the system can give.
  if (!buffer) g_error("Failed to receive bytes from server");
  for (std::size_t count = 0; count < length;) {
    const ssize_t got = recv(socket, buffer.get() + count, length - count, 0);
    if (got < 1) g_error("Failed to receive bytes from server");
    count += static_cast<std::size_t>(got);
  }
  return buffer;
}

// What is made for scripts on the way of a message goes when it has been dispatched.
void dispatchInScope(MorvikData& instance, const zeph::ZephMsg& message) {
  const v8::HandleScope handles(v8::Isolate::GetCurrent());
  dispatch(instance, message);
}

// A plain object in third place is refused and anything else there is let pass, on purpose.
bool acceptsConnect(const Args& args) {
  if (args.Length() < 2 || !args[0]->IsString() || !args[1]->IsInt32()) return false;
  return args.Length() == 2 || (args.Length() == 3 && !args[2]->IsObject());
}

}  // namespace

int connectServer(const char* host, std::int32_t port, MorvikData* listener) {
  const int descriptor = ::socket(AF_INET, SOCK_STREAM, 0);
  if (!establish(descriptor, host, port)) {
    close(descriptor);
    return -1;
  }
  listener->socket = descriptor;
  g_idle_add(onSocketIdle, listener);
  return 0;
}

int sendZephMsg(int socket, const zeph::ZephMsg& message) {
  g_debug("Sending MSG\n%s", message.DebugString().c_str());
  const std::size_t length = message.ByteSizeLong();
  std::string frame(kFrameHeaderSize + length, '\0');
  const auto header = frameHeader(static_cast<std::uint32_t>(length));
  std::memcpy(frame.data(), header.data(), header.size());
  message.SerializeToArray(frame.data() + kFrameHeaderSize, static_cast<int>(length));
  sendAll(socket, reinterpret_cast<const unsigned char*>(frame.data()), frame.size());
  return 0;
}

int receiveZephMsg(int socket, zeph::ZephMsg& message) {
  if (!messageWaits(socket)) return 1;
  g_debug("message received");
  const std::uint32_t length = receiveLength(socket);
  const MallocBytes payload = receivePayload(socket, length);
  parseZephMsg({payload.get(), length}, message);
  // Messages with credentials never reach the log.
  if (!message.has_social()) g_debug("Received MSG\n%s", message.DebugString().c_str());
  return 0;
}

gboolean onSocketIdle(gpointer listener) {
  auto& instance = *static_cast<MorvikData*>(listener);
  zeph::ZephMsg message;
  const int result = receiveZephMsg(instance.socket, message);
  if (result == -1) return G_SOURCE_REMOVE;
  if (result == 0) dispatchInScope(instance, message);
  return G_SOURCE_CONTINUE;
}

void connect(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!acceptsConnect(args)) return throwText(isolate, "Wrong arguments");
  ArgumentReader reader(args);
  const std::string host = reader.ascii(0);
  const std::int32_t port = reader.int32(1);
  if (connectServer(host.c_str(), port, &currentInstance(isolate)) == 0) return;
  g_warning("connection refused");
  throwText(isolate, "connection refused");
}

}  // namespace morvik
