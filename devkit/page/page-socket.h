// The socket of one open page.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "device/owned.h"

namespace morvik::devkit {

/// The largest frame that a page may send, in bytes. A larger one ends its connection.
inline constexpr std::size_t kLargestPageFrame = std::size_t{64} * 1024;

/// Works on the main context that its server works on.
class PageSocket {
 public:
  using Number = std::uint64_t;

  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void frameArrived(Number page, std::string_view text) = 0;
    /// Told once. The socket may be destroyed from within.
    virtual void pageLeft(Number page) = 0;
  };

  /// The owner must outlive the socket. Takes a share of the connection.
  PageSocket(Owner& owner, Number number, SoupWebsocketConnection* connection);
  /// Tells its owner nothing any more.
  ~PageSocket();
  PageSocket(const PageSocket&) = delete;
  PageSocket& operator=(const PageSocket&) = delete;

  /// Does not wait. The text must be UTF-8. Dropped when the page is about to leave.
  void send(const std::string& text);
  /// The page leaves, and is told why.
  void close(unsigned short code, const char* reason);

 private:
  static void onMessage(SoupWebsocketConnection* connection, int type, GBytes* message,
                        gpointer self);
  static void onClosed(SoupWebsocketConnection* connection, gpointer self);

  Owner& owner_;
  Number number_;
  GOwned<SoupWebsocketConnection> connection_;
};

}  // namespace morvik::devkit
