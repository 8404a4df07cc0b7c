// The length prefix. The machine's byte order never shows on the wire.
#include "channel/frame.h"

#include <arpa/inet.h>

#include <bit>
#include <cstring>

namespace morvik {

std::array<std::uint8_t, kFrameHeaderSize> frameHeader(std::uint32_t bodyLength) {
  return std::bit_cast<std::array<std::uint8_t, kFrameHeaderSize>>(htonl(bodyLength));
}

std::uint32_t bodyLength(std::span<const std::uint8_t, kFrameHeaderSize> header) {
  std::uint32_t length = 0;
  std::memcpy(&length, header.data(), kFrameHeaderSize);
  return ntohl(length);
}

}  // namespace morvik
