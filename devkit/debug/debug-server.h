// Where a debugger attaches: the protocol's discovery and one WebSocket on 127.0.0.1.
#pragma once

#include <libsoup/soup.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "debug/client-queue.h"
#include "debug/discovery.h"
#include "device/owned.h"
#include "page/admission.h"

namespace morvik::devkit {

/// Works in a thread of its own, so that it is there for a script that does not return. One
/// debugger at a time; a second one is refused. Tells also when nobody reads standard error any
/// more, which a paused application would not notice. Lives as long as its process.
class DebugServer {
 public:
  /// What a debugger does goes into the queue, which must outlive the process.
  DebugServer(DebugTarget target, ClientQueue& queue);
  DebugServer(const DebugServer&) = delete;
  DebugServer& operator=(const DebugServer&) = delete;

  /// Takes the first free one of so many ports, from `port` on; 0 takes any. Starts the thread.
  /// False when there is none, with the reason in `trouble`. Called once, before any other
  /// function.
  [[nodiscard]] bool start(std::uint16_t port, int ports, std::string& trouble);

  const DebugTarget& target() const { return target_; }

  /// Sends a message of the protocol, UTF-8, to the debugger; dropped when there is none. From any
  /// thread; does not wait.
  void send(std::string message);

  /// Sends the debugger away once it has got everything, and waits for that, but not for long. To
  /// be called before the process ends, in any thread but the server's own.
  void close();

 private:
  using ContextOwned = std::unique_ptr<GMainContext, Release<g_main_context_unref>>;

  static void onHeaders(SoupServer* server, SoupServerMessage* message, const char* path,
                        GHashTable* query, gpointer self);
  static void onWebSocket(SoupServer* server, SoupServerMessage* message, const char* path,
                          SoupWebsocketConnection* connection, gpointer self);
  static void onMessage(SoupWebsocketConnection* connection, int type, GBytes* message,
                        gpointer self);
  static void onClosed(SoupWebsocketConnection* connection, gpointer self);
  bool listen(std::uint16_t port, int ports, std::string& trouble);
  void addHandlers();
  void watchReaders();
  void run();
  void answer(SoupServerMessage* message, const std::string& path);
  void later(std::function<void()> work);
  void deliver(const std::string& message);
  void sendAway();
  void isGone();
  std::string socketPath() const { return "/" + target_.id; }

  DebugTarget target_;
  ClientQueue& queue_;
  ContextOwned context_;
  GOwned<SoupServer> server_;
  std::optional<Admission> admission_;          // known once it listens
  GOwned<SoupWebsocketConnection> connection_;  // of the one debugger; the thread's own

  std::mutex mutex_;
  std::condition_variable changed_;
  bool closing_ = false;
  bool closed_ = false;
};

}  // namespace morvik::devkit
