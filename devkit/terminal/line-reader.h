// The lines of a file descriptor, as they come.
#pragma once

#include <functional>
#include <string_view>

#include "device/owned.h"

namespace morvik::devkit {

/// Reads on the default main loop. The end of the input, or trouble with it, ends the reading and
/// nothing else.
class LineReader {
 public:
  /// Gets each line without its line end.
  using Sink = std::function<void(std::string_view line)>;

  /// The descriptor stays open.
  LineReader(int fd, Sink sink);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

 private:
  static void onLine(GObject* stream, GAsyncResult* result, void* reader);
  void readNext();

  Sink sink_;
  GOwned<GDataInputStream> input_;
  GOwned<GCancellable> cancellable_;
};

}  // namespace morvik::devkit
