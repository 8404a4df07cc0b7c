// Base64 (RFC 4648, the standard alphabet).
#pragma once

#include <span>
#include <string>

namespace morvik {

/// The bytes in base64, filled up with "=" and without line breaks.
std::string base64Encode(std::span<const unsigned char> bytes);

}  // namespace morvik
