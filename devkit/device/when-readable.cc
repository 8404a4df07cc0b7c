// The function belongs to the source, and GLib keeps it while it runs.
#include "device/when-readable.h"

#include <glib-unix.h>

#include <utility>

namespace morvik::devkit {
namespace {

using Read = std::function<bool()>;

gboolean callRead(int /*descriptor*/, GIOCondition /*condition*/, gpointer read) {
  return (*static_cast<Read*>(read))() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void releaseRead(gpointer read) { delete static_cast<Read*>(read); }

}  // namespace

GSourceAttached whenReadable(int descriptor, std::function<bool()> read) {
  GSourceAttached source(g_unix_fd_source_new(descriptor, G_IO_IN));
  g_source_set_callback(source.get(), G_SOURCE_FUNC(callRead), new Read(std::move(read)),
                        releaseRead);
  g_source_attach(source.get(), g_main_context_get_thread_default());
  return source;
}

}  // namespace morvik::devkit
