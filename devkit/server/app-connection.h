// One application's connection: bytes in, whole payloads out, and frames back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "device/device.h"
#include "device/owned.h"
#include "server/frame.h"

namespace morvik::devkit {

/// What waits for an application that is busy, in bytes. One that leaves more unread is closed.
inline constexpr std::size_t kMaxUnsent = std::size_t{8} * 1024 * 1024;

/// Reads and writes on the thread-default main context, without blocking. A connection that has
/// ended stays silent, and is released when its last read and write have returned.
class AppConnection : public std::enable_shared_from_this<AppConnection> {
 public:
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void payloadArrived(AppNumber application, const std::string& payload) = 0;
    /// Told once, unless `close` came first. `trouble` is empty when the application closed its
    /// side between two frames.
    virtual void connectionEnded(AppNumber application, const std::string& trouble) = 0;
  };

  /// The owner must live until the connection has ended or is closed.
  AppConnection(Owner& owner, AppNumber number, GSocketConnection* socket);
  AppConnection(const AppConnection&) = delete;
  AppConnection& operator=(const AppConnection&) = delete;

  /// Begins to read. The connection must be held by a shared_ptr.
  void start();

  /// Every payload leaves with its length in front, after those sent before it: in one write, or in
  /// the pieces that the delivery asks for. The owner is told of nothing before this returns: who
  /// sends may be going through all connections.
  void send(const std::string& payload, const Delivery& delivery = {});

  /// Whether something that was sent has not yet arrived at the application's end.
  bool isDelivering() const;

  /// The port of the application's end.
  std::uint16_t remotePort() const;

  /// The application sees the end of its stream; the owner is told nothing any more.
  void close();

 private:
  using Kept = std::shared_ptr<AppConnection>;
  static Kept takeKept(void* kept);
  void* keep();
  static void onRead(GObject* stream, GAsyncResult* result, void* kept);
  static void onWritten(GObject* stream, GAsyncResult* result, void* kept);

  void read();
  void acknowledge();
  void take(std::size_t count);
  void writeNext();
  void callAfter(std::chrono::milliseconds pause, GSourceFunc what);
  static gboolean onPauseOver(void* kept);
  static gboolean onOverflow(void* kept);
  void end(const std::string& trouble);

  Owner* owner_;  // null once the connection has ended
  const AppNumber number_;
  GOwned<GSocketConnection> socket_;
  GOwned<GCancellable> cancellable_;
  FrameReader frames_;
  std::array<char, std::size_t{64} * 1024> input_;
  struct Piece {
    std::string bytes;
    std::chrono::milliseconds pause;  // before it
  };
  std::deque<Piece> unsent_;  // the first one is being written, or waits for its pause to be over
  std::size_t unsentBytes_ = 0;
  bool overflows_ = false;  // too much is unsent: it is about to be closed
};

}  // namespace morvik::devkit
