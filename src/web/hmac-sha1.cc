// HMAC-SHA1.
#include "web/hmac-sha1.h"

#include <algorithm>
#include <cstring>

namespace morvik {
namespace {

constexpr std::size_t kAreaSize = 4096;
constexpr unsigned char kInnerPad = 0x36;
constexpr unsigned char kOuterPad = 0x5c;

void mix(std::span<unsigned char> pad, const unsigned char* key) {
  for (unsigned char& byte : pad) byte = static_cast<unsigned char>(byte ^ *key++);
}

}  // namespace

HmacSha1::HmacSha1()
    : ipad_{},
      opad_{},
      innerDigest_(std::make_unique<unsigned char[]>(kAreaSize)),
      keyBlock_(std::make_unique<unsigned char[]>(kAreaSize)),
      innerMessage_(std::make_unique<unsigned char[]>(kAreaSize)),
      outerMessage_(std::make_unique<unsigned char[]>(kAreaSize)) {}

// What holds the key does not outlive the signature.
HmacSha1::~HmacSha1() {
  explicit_bzero(ipad_.data(), ipad_.size());
  explicit_bzero(opad_.data(), opad_.size());
  explicit_bzero(keyBlock_.get(), kAreaSize);
  explicit_bzero(innerMessage_.get(), kBlockSize);
  explicit_bzero(outerMessage_.get(), kAreaSize);
}

void HmacSha1::hash(const unsigned char* bytes, std::size_t length,
                    std::span<unsigned char, kDigestSize> target) {
  reset();
  update(bytes, static_cast<std::uint32_t>(length));
  final();
  getHash(target);
}

// A key of exactly one block is used as it stands.
void HmacSha1::takeKey(std::string_view key) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(key.data());
  std::fill_n(keyBlock_.get(), kBlockSize, static_cast<unsigned char>(0));
  if (key.size() > kBlockSize) {
    hash(bytes, key.size(), std::span<unsigned char, kDigestSize>(keyBlock_.get(), kDigestSize));
  } else {
    std::copy_n(bytes, key.size(), keyBlock_.get());
  }
}

void HmacSha1::sign(std::string_view text, std::string_view key,
                    std::span<unsigned char, kDigestSize> target) {
  takeKey(key);
  const std::size_t innerSize = kBlockSize + text.size();
  if (innerSize > kAreaSize) innerMessage_ = std::make_unique<unsigned char[]>(innerSize);
  const std::span<unsigned char, kDigestSize> inner(innerDigest_.get(), kDigestSize);

  ipad_.fill(kInnerPad);
  mix(ipad_, keyBlock_.get());
  std::copy(ipad_.begin(), ipad_.end(), innerMessage_.get());
  std::copy(text.begin(), text.end(), innerMessage_.get() + kBlockSize);
  hash(innerMessage_.get(), innerSize, inner);

  opad_.fill(kOuterPad);
  mix(opad_, keyBlock_.get());
  std::copy(opad_.begin(), opad_.end(), outerMessage_.get());
  std::copy(inner.begin(), inner.end(), outerMessage_.get() + kBlockSize);
  hash(outerMessage_.get(), kBlockSize + kDigestSize, target);
}

}  // namespace morvik
