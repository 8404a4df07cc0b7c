// HMAC (RFC 2104) on SHA-1.
#pragma once

#include <memory>
#include <string_view>

#include "web/sha1.h"

namespace morvik {

/// Lives for one signature.
class HmacSha1 : private Sha1Hash {
 public:
  using Sha1Hash::kDigestSize;

  HmacSha1();
  ~HmacSha1();

  /// Text and key are bytes, both of any length.
  void sign(std::string_view text, std::string_view key,
            std::span<unsigned char, kDigestSize> target);

 private:
  using Area = std::unique_ptr<unsigned char[]>;

  void takeKey(std::string_view key);
  void hash(const unsigned char* bytes, std::size_t length,
            std::span<unsigned char, kDigestSize> target);

  std::array<unsigned char, kBlockSize> ipad_;
  std::array<unsigned char, kBlockSize> opad_;
  Area innerDigest_;
  Area keyBlock_;      // the key, or the hash of a long key
  Area innerMessage_;  // the inner pad and the text; grows with the text
  Area outerMessage_;  // the outer pad and the inner hash
};

}  // namespace morvik
