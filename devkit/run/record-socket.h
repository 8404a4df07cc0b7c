// A stream that a program under our eyes gets as its standard output or error, and what it writes.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "device/when-readable.h"
#include "run/file-descriptor.h"

namespace morvik::devkit {

/// Reads on the thread-default main context. Unlike a pipe it tells which process wrote, and keeps
/// every write on standard error apart from the next.
class RecordSocket {
 public:
  enum class Kind {
    kRecords,  ///< each write is one record; a write above 200 KB fails
    kBytes,    ///< writes of one process may run together
  };
  /// Gets what the process has written.
  using Sink = std::function<void(pid_t pid, std::string_view bytes)>;
  /// Called once, when nobody is left who could write.
  using Ended = std::function<void()>;

  RecordSocket(Kind kind, Sink sink, Ended ended);
  RecordSocket(const RecordSocket&) = delete;
  RecordSocket& operator=(const RecordSocket&) = delete;

  /// What the program gets; not valid when the system gave none.
  const FileDescriptor& writer() const { return writer_; }
  /// To be called when the program has got it.
  void closeWriter() { writer_.close(); }

  /// Reads all that has been written.
  void drain();
  bool ended() const { return hasEnded_; }

 private:
  bool take();
  bool readOnce();

  Sink sink_;
  Ended endedSink_;
  std::string buffer_;
  FileDescriptor reader_;
  FileDescriptor writer_;
  bool hasEnded_ = false;
  GSourceAttached source_;
};

}  // namespace morvik::devkit
