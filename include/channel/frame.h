// The frame around every message on the socket: four bytes, big-endian, that hold the length of the
// serialised ZephMsg behind them. Pure functions; the socket is the connection's.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace morvik {

inline constexpr std::size_t kFrameHeaderSize = 4;

/// The header for a payload of this length.
std::array<std::uint8_t, kFrameHeaderSize> frameHeader(std::uint32_t bodyLength);

/// The payload's length that a header tells.
std::uint32_t bodyLength(std::span<const std::uint8_t, kFrameHeaderSize> header);

}  // namespace morvik
