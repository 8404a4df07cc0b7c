// The one connection to the device server: a blocking socket, polled from the main loop's idle
// turns. Any failure of a connection that stands ends the process through a fatal log.
#pragma once

#include <glib.h>
#include <zeph-message.pb.h>

#include <cstdint>

#include "host/zeph-msg-listener.h"

namespace morvik {

class MorvikData;

/// Connects to host and port (its low 16 bits), both blocking, and adds the message pump to the
/// main loop. 0 on success; -1 after a failed name lookup or connect, and nothing has changed then.
/// A second connection takes the place of the first one, which stays open and unread.
int connectServer(const char* host, std::int32_t port, MorvikData* listener);

/// Writes one frame. Blocks while the kernel's buffer is full. Returns 0; a failure is fatal.
int sendZephMsg(int socket, const zeph::ZephMsg& message);

/// Waits a millisecond at most and reads at most one frame into an empty message. 0 when a message
/// was read, 1 when none was waiting; a failure is fatal.
int receiveZephMsg(int socket, zeph::ZephMsg& message);

/// The message pump, an idle source: one message a turn, dispatched to the MorvikData `listener`.
gboolean onSocketIdle(gpointer listener);

}  // namespace morvik
