// Which process is at the other end of a connection on this machine.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>

namespace morvik::devkit {

/// The one of these processes that holds the end of a TCP connection from `port` to `serverPort`,
/// both on 127.0.0.1; 0 when none does, or the system does not tell.
pid_t ownerOfConnection(std::uint16_t port, std::uint16_t serverPort,
                        std::span<const pid_t> processes);

}  // namespace morvik::devkit
