// Where the log goes: all of it to syslog, some of it to standard error.
#pragma once

#include <glib.h>

#include "host/launch-options.h"
#include "host/system-log.h"

namespace morvik {

/// Opens the system log and makes `logHandler` GLib's default handler. `options` and `path`, of the
/// log's socket, must outlive the process's last log call.
void openLog(LaunchOptions& options, const char* path = kSystemLogPath);

/// The log handler: every message goes to the system log, cut at 128 KiB with the count of what was
/// left out; one whose level is at most 1 << debug also goes to standard error as "label: text".
/// `options` is the LaunchOptions. Levels beyond WARNING have no row of their own: ERROR reaches
/// syslog at debug priority and standard error without a label.
void logHandler(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer options);

/// Ends the process as `g_error("%s", text)` does, with the same lines and by the same signal, but
/// takes no memory: GLib would never come back from a message that it has no memory to form.
[[noreturn]] void endFatally(const char* text);

}  // namespace morvik
