// Frames as a device server writes them.
#pragma once

#include <string>

#include "channel/frame.h"

namespace morvik::test {

/// The four bytes that announce a payload of this length.
inline std::string header(std::uint32_t length) {
  const auto bytes = frameHeader(length);
  return {bytes.begin(), bytes.end()};
}

inline std::string frame(const std::string& payload) {
  return header(static_cast<std::uint32_t>(payload.size())) + payload;
}

}  // namespace morvik::test
