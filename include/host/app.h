// The life of one application: a child process from its fork to its end.
#pragma once

#include <glib.h>

namespace morvik {

class MorvikData;

/// Time from the end of the first run of main.js until an application must be interactive.
inline constexpr int kAutokillMs = 10000;

/// A child's whole life: starts the application and runs its main loop. Returns when the loop has
/// ended; every other end of a child ends the process from within. The instance must outlive it.
void runApp(MorvikData& instance);

/// Everything up to and including the first run of main.js. The engine must stand.
void startApp(MorvikData& instance);

/// The timer that ends an application which is not interactive in time. Never fires twice.
gboolean autokillCallback(gpointer instance);

}  // namespace morvik
