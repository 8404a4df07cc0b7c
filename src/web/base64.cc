// Three bytes become four characters.
#include "web/base64.h"

#include <array>
#include <cstddef>

namespace morvik {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::array<char, 4> encodeTriple(const std::array<unsigned char, 3>& bytes) {
  const unsigned bits = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | unsigned{bytes[2]};
  return {kAlphabet[bits >> 18 & 63], kAlphabet[bits >> 12 & 63], kAlphabet[bits >> 6 & 63],
          kAlphabet[bits & 63]};
}

}  // namespace

std::string base64Encode(std::span<const unsigned char> bytes) {
  std::string text;
  for (; bytes.size() >= 3; bytes = bytes.subspan(3)) {
    const auto characters = encodeTriple({bytes[0], bytes[1], bytes[2]});
    text.append(characters.data(), characters.size());
  }
  if (bytes.empty()) return text;
  const unsigned char second = bytes.size() > 1 ? bytes[1] : 0;
  const auto tail = encodeTriple({bytes[0], second, 0});
  text.append(tail.data(), bytes.size() + 1);
  return text.append(3 - bytes.size(), '=');
}

}  // namespace morvik
