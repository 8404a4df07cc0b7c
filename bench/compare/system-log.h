// The log of every comparison: a compiled daemon that drops what it is sent.
#pragma once

#include <memory>

#include "compare/program.h"
#include "support/system/log-socket.h"
#include "support/temporary-folder.h"

namespace morvik::bench {

class SystemLog {
 public:
  /// Starts `daemon`, the path of bench-log-daemon.
  explicit SystemLog(const std::string& daemon);

  /// For a new process, as in test::Start: it finds the daemon as /dev/log.
  const char* enter() const { return place_.enterNamespace(); }
  /// A socket that is connected to the daemon: a write is a record.
  [[nodiscard]] test::Descriptor connected() const;
  [[nodiscard]] pid_t daemon() const { return daemon_->pid(); }

 private:
  [[nodiscard]] std::string path() const { return folder_ / "log"; }

  test::TemporaryFolder folder_;
  test::LogSocket place_;
  std::unique_ptr<Program> daemon_;
};

}  // namespace morvik::bench
