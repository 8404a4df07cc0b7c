// One application's connection through the relay: a socket on each side, and a flow in each
// direction.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "device/event.h"
#include "device/owned.h"
#include "server/frame.h"

namespace morvik::devkit {

/// The messages in a stream that somebody else reads. A stream that is no sequence of messages is
/// told of and then left alone.
class FrameTap {
 public:
  using Message = std::function<void(zeph::ZephMsg message)>;
  using Trouble = std::function<void(const std::string& text)>;

  FrameTap(Message message, Trouble trouble)
      : message_(std::move(message)), trouble_(std::move(trouble)) {}

  /// The next bytes of the stream.
  void hear(std::string_view bytes);
  /// Part of a frame has been heard and its rest has not.
  bool isInsideFrame() const { return frames_.isInsideFrame(); }

 private:
  FrameReader frames_;
  bool lost_ = false;
  Message message_;
  Trouble trouble_;
};

/// Works on the thread-default main context, without blocking.
class RelayedConnection : public std::enable_shared_from_this<RelayedConnection> {
 public:
  class Owner {
   public:
    virtual ~Owner() = default;
    /// What passed, before it is passed on.
    virtual void receivedFrom(AppNumber application, zeph::ZephMsg message) = 0;
    virtual void sentTo(AppNumber application, zeph::ZephMsg message) = 0;
    virtual void trouble(Trouble trouble) = 0;
    /// Told once, unless `reset` came first. Nothing is told afterwards.
    virtual void connectionEnded(AppNumber application) = 0;
  };

  /// The owner must live until the connection has ended or is reset.
  RelayedConnection(Owner& owner, AppNumber number, GSocketConnection* application);
  ~RelayedConnection();
  RelayedConnection(const RelayedConnection&) = delete;
  RelayedConnection& operator=(const RelayedConnection&) = delete;

  /// Connects on to the server; nothing is read from the application before that stands. The
  /// connection must be held by a shared_ptr.
  void connectTo(GSocketConnectable* server);

  /// Both sides see the connection reset. The owner is told nothing any more.
  void reset();

  /// The port of the application's end.
  std::uint16_t applicationPort() const { return applicationPort_; }

 private:
  // Bytes on their way from one socket to the other. What was read is written before more is read,
  // so a slow reader slows the writer, as it would without a relay.
  struct Flow {
    RelayedConnection* connection = nullptr;
    const char* whose = nullptr;  // the side that it comes from
    GSocket* from = nullptr;
    GSocket* to = nullptr;
    FrameTap tap;
    GSourceOwned source = {};
    std::array<char, std::size_t{64}* 1024> bytes = {};
    std::size_t begin = 0;  // of what is read and not yet written
    std::size_t end = 0;
    bool over = false;
  };

  static void onConnected(GObject* client, GAsyncResult* result, gpointer kept);
  static gboolean onReady(GSocket* socket, GIOCondition condition, gpointer flow);
  void begin(GSocketConnection* server);
  void prepare(Flow& flow, GSocket* from, GSocket* to);
  void await(Flow& flow, GIOCondition condition);
  bool readSome(Flow& flow);
  bool writeSome(Flow& flow);
  void endOfStream(Flow& flow);
  void tell(const std::string& text, ServerLoss loss = ServerLoss::kNone,
            const std::string& why = {});
  void breakOff(const Flow& flow, const std::string& why);
  void fail(const std::string& text, ServerLoss loss, const std::string& why);
  void finish();

  Owner* owner_;  // null once the connection has ended
  const AppNumber number_;
  std::uint16_t applicationPort_ = 0;
  GOwned<GSocketConnection> application_;
  GOwned<GSocketConnection> server_;
  GOwned<GCancellable> cancellable_;
  Flow up_;    // to the server
  Flow down_;  // to the application
};

}  // namespace morvik::devkit
