// How many system calls a process makes each time round its loop.
#pragma once

#include <sys/types.h>

#include <optional>

namespace morvik::bench {

/// Watches the process's first thread for so long, which slows it down, and gives all calls in
/// terms of the one that it makes most often, which is once a turn. Nothing when it makes none, or
/// when nobody may watch.
std::optional<double> callsOfATurn(pid_t process, double seconds);

}  // namespace morvik::bench
