// Signals as sources of the default main loop.
#include "until-told.h"

#include <glib-unix.h>

#include <csignal>

namespace morvik::devkit {

UntilTold::UntilTold()
    : loop_(g_main_loop_new(nullptr, FALSE)),
      interrupt_(g_unix_signal_add(SIGINT, onSignal, loop_.get())),
      terminate_(g_unix_signal_add(SIGTERM, onSignal, loop_.get())) {}

UntilTold::~UntilTold() {
  g_source_remove(interrupt_);
  g_source_remove(terminate_);
}

gboolean UntilTold::onSignal(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_CONTINUE;
}

}  // namespace morvik::devkit
