// The message pump: what the device server sends, message by message, from the main loop.
#pragma once

#include <glib.h>

#include <cstdint>

namespace morvik {

class MorvikData;

/// Connects (see openConnection), gives the socket to the instance and adds the pump to the main
/// loop, where it stays until the process ends. 0 on success; -1 when no connection came about, and
/// nothing has changed then.
///
/// A second connection takes the place of the first one, which stays open and unread, and a second
/// pump comes beside the first. Both read the instance's socket, so the new one: two messages of it
/// are handled in a turn of the loop, still one after the other and in their order.
int connectServer(const char* host, std::int32_t port, MorvikData* listener);

/// The pump, an idle source: one message a turn, dispatched to the MorvikData `listener`. The
/// socket is looked up anew each time. Timers that are due come first.
gboolean onSocketIdle(gpointer listener);

}  // namespace morvik
