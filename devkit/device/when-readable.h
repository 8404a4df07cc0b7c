// Descriptors that the main loop reads.
#pragma once

#include <glib.h>

#include <functional>
#include <memory>

namespace morvik::devkit {

struct Detach {
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
};
/// A source that leaves its main context with its owner.
using GSourceAttached = std::unique_ptr<GSource, Detach>;

/// Calls `read` from the thread-default main context whenever the descriptor has bytes, an end or
/// an error for it, for as long as it returns true and the result lives; `read` may end that
/// itself. The descriptor stays open and must outlive the result.
[[nodiscard]] GSourceAttached whenReadable(int descriptor, std::function<bool()> read);

}  // namespace morvik::devkit
