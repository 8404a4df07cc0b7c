// SHA-1 and HMAC on it, beside GLib's. The first byte tells in how many pieces the hash gets its
// text; for the signature, the key is what stands in front of the first line break.
#include <glib.h>

#include <algorithm>
#include <array>
#include <string>

#include "fuzz/fuzz.h"
#include "web/hmac-sha1.h"
#include "web/sha1.h"

namespace morvik::test {
namespace {

using Digest = std::array<unsigned char, Sha1Hash::kDigestSize>;

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string hexadecimal(const Digest& digest) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : digest) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

void requireSame(const Digest& digest, gchar* expected) {
  require(hexadecimal(digest) == expected, "the same as GLib's");
  g_free(expected);
}

void hashInPieces(std::string_view text, std::size_t piece) {
  Sha1Hash hash;
  for (std::string_view rest = text; !rest.empty();
       rest.remove_prefix(std::min(piece, rest.size())))
    hash.update(bytesOf(rest), static_cast<std::uint32_t>(std::min(piece, rest.size())));
  hash.final();
  Digest digest{};
  hash.getHash(digest);
  requireSame(digest, g_compute_checksum_for_data(G_CHECKSUM_SHA1, bytesOf(text), text.size()));
}

void sign(std::string_view text, std::string_view key) {
  Digest digest{};
  HmacSha1().sign(text, key, digest);
  requireSame(digest, g_compute_hmac_for_data(G_CHECKSUM_SHA1, bytesOf(key), key.size(),
                                              bytesOf(text), text.size()));
}

}  // namespace

void fuzz(std::string_view input) {
  if (input.empty()) return hashInPieces("", 1);
  const auto piece = static_cast<unsigned char>(input.front());
  hashInPieces(input.substr(1), piece + std::size_t{1});
  const std::size_t key = std::min(input.find('\n'), input.size());
  sign(input.substr(key), input.substr(0, key));
}

}  // namespace morvik::test
