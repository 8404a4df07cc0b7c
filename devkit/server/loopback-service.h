// A port of this machine where others come in.
#pragma once

#include <cstdint>
#include <functional>

#include "device/owned.h"

namespace morvik::devkit {

/// Works on the thread-default main context.
class LoopbackService {
 public:
  /// Gets each connection, which lives on only when somebody keeps it.
  using Incoming = std::function<void(GSocketConnection* connection)>;

  explicit LoopbackService(Incoming incoming);
  /// Nobody is let in any more; connections that are kept stand.
  ~LoopbackService();
  LoopbackService(const LoopbackService&) = delete;
  LoopbackService& operator=(const LoopbackService&) = delete;

  /// Listens on 127.0.0.1. Port 0 takes a free one. Called once. False when it cannot, with the
  /// reason in `error`.
  [[nodiscard]] bool listen(std::uint16_t port, GErrorOwned& error);

  /// The port that it listens on; valid after a successful `listen`.
  std::uint16_t port() const { return port_; }

 private:
  static int onIncoming(GSocketService* service, GSocketConnection* connection, GObject* source,
                        void* self);

  Incoming incoming_;
  GOwned<GSocketService> service_;
  std::uint16_t port_ = 0;
};

}  // namespace morvik::devkit
