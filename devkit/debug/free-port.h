// A port for a program that is still to come.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace morvik::devkit {

/// A port of 127.0.0.1 where nobody listens now: `port` itself, any for 0, or, where `orNext` says
/// so, one of those behind it. Nothing when there is none, with the reason in `trouble`.
std::optional<std::uint16_t> freePort(std::uint16_t port, bool orNext, std::string& trouble);

}  // namespace morvik::devkit
