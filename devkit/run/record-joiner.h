// From the writes of several processes to whole records.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace morvik::devkit {

/// The C library writes a line on standard error in pieces of kPieceSize bytes, and libxml2 writes
/// its lines word by word: pieces of one process make one record until one ends with a newline. A
/// newline within a piece does not end the record, so nothing that a script writes can look like
/// a record of the host.
class RecordJoiner {
 public:
  static constexpr std::size_t kPieceSize = 8192;
  /// What a process writes without an end is cut here.
  static constexpr std::size_t kLongestRecord = std::size_t{1} << 20;

  /// Gets each record without its newline.
  using Sink = std::function<void(pid_t pid, std::string_view record)>;

  explicit RecordJoiner(Sink sink) : sink_(std::move(sink)) {}

  /// One write of a process.
  void take(pid_t pid, std::string_view piece);
  /// The process has ended: what it has begun is a record.
  void finish(pid_t pid);
  /// All of them have ended.
  void finishAll();

 private:
  struct Begun {
    std::string text;
    bool mayBeWhole = false;  // the last piece was a full one and ended with a newline
  };

  void emit(pid_t pid, Begun& begun);

  Sink sink_;
  std::map<pid_t, Begun> begun_;
};

/// The lines that several processes write on standard output, where a newline is the end of a line
/// and nothing else.
class LineSplitter {
 public:
  using Sink = RecordJoiner::Sink;

  explicit LineSplitter(Sink sink) : sink_(std::move(sink)) {}

  void take(pid_t pid, std::string_view bytes);
  void finishAll();

 private:
  Sink sink_;
  std::map<pid_t, std::string> begun_;
};

}  // namespace morvik::devkit
