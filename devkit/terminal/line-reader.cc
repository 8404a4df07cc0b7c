// One line at a time, asynchronously.
#include "terminal/line-reader.h"

#include <gio/gunixinputstream.h>

namespace morvik::devkit {

LineReader::LineReader(int fd, Sink sink)
    : sink_(std::move(sink)), cancellable_(g_cancellable_new()) {
  const GOwned<GInputStream> bytes(g_unix_input_stream_new(fd, FALSE));
  input_.reset(g_data_input_stream_new(bytes.get()));
  readNext();
}

LineReader::~LineReader() { g_cancellable_cancel(cancellable_.get()); }

void LineReader::readNext() {
  g_data_input_stream_read_line_async(input_.get(), G_PRIORITY_DEFAULT, cancellable_.get(), onLine,
                                      this);
}

// A reader that is gone has cancelled its read: then it must not be looked at.
void LineReader::onLine(GObject* stream, GAsyncResult* result, void* reader) {
  gsize length = 0;
  GErrorOwned error;
  const GText line(g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(stream), result,
                                                        &length, error.out()));
  if (!line) return;
  auto* self = static_cast<LineReader*>(reader);
  self->sink_(std::string_view(line.get(), length));
  self->readNext();
}

}  // namespace morvik::devkit
