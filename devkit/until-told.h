// The life of a verb that runs until Ctrl-C: a main loop that SIGINT and SIGTERM end.
#pragma once

#include "device/owned.h"

namespace morvik::devkit {

class UntilTold {
 public:
  /// From now on the signals end the loop, and no longer the process.
  UntilTold();
  ~UntilTold();
  UntilTold(const UntilTold&) = delete;
  UntilTold& operator=(const UntilTold&) = delete;

  void run() { g_main_loop_run(loop_.get()); }
  // Ends `run`, as the signals do.
  void quit() { g_main_loop_quit(loop_.get()); }

 private:
  static gboolean onSignal(gpointer loop);

  GLoop loop_;
  guint interrupt_;
  guint terminate_;
};

}  // namespace morvik::devkit
