// The socket that programs write their system log to.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "device/owned.h"

namespace morvik::devkit {

/// Receives on the default main loop. Removes its socket at the end.
class SystemLog {
 public:
  using Sink = std::function<void(std::string_view record)>;

  explicit SystemLog(Sink sink) : sink_(std::move(sink)) {}
  ~SystemLog();
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;

  /// Makes the socket, in the place of one that nobody listens on. Called once.
  /// Gives the reason when it cannot.
  [[nodiscard]] std::optional<std::string> listen(const std::string& path);

 private:
  static gboolean onReadable(GSocket* socket, GIOCondition condition, gpointer log);

  Sink sink_;
  std::string path_;
  ino_t inode_ = 0;
  GOwned<GSocket> socket_;
  GSourceOwned source_;
};

/// A record as a program sends it, "<135>Jan  1 12:00:00 name[12]: text", in the form of our own
/// log lines: "DEBUG: name[12]: text". Anything else is given as it is.
std::string readableRecord(std::string_view record);

}  // namespace morvik::devkit
