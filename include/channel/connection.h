// The connection to the device server: a blocking socket, and frames on it. It knows neither the
// script engine nor the main loop. A failure of a connection that stands ends the process through a
// fatal log: nothing is connected anew, and no script hears of it.
#pragma once

#include <zeph-message.pb.h>

#include <cstdint>

#include "host/zeph-msg-listener.h"

namespace morvik {

/// Connects to host and port (its low 16 bits), both blocking. The socket, which nothing ever
/// closes; -1 after a failed name lookup or connect, of which the log tells.
int openConnection(const char* host, std::int32_t port);

/// Writes one frame. Blocks while the kernel's buffer is full. Returns 0; a failure is fatal.
int sendZephMsg(int socket, const zeph::ZephMsg& message);

/// Waits a millisecond at most and reads at most one frame into an empty message. 0 when a message
/// was read, 1 when none was waiting; a failure is fatal. Once a frame has begun, this blocks until
/// it has come whole.
int receiveZephMsg(int socket, zeph::ZephMsg& message);

}  // namespace morvik
