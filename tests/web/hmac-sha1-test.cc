// HMAC-SHA1: the standard's vectors, keys around a block, texts of any length.
#include "web/hmac-sha1.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <string>

#include "host/owned.h"

namespace morvik::test {
namespace {

std::string hmac(std::string_view text, std::string_view key) {
  HmacSha1 hmac;
  std::array<unsigned char, HmacSha1::kDigestSize> digest{};
  hmac.sign(text, key, digest);
  std::string hex;
  for (const unsigned char byte : digest) {
    hex += "0123456789abcdef"[byte >> 4];
    hex += "0123456789abcdef"[byte & 15];
  }
  return hex;
}

std::string reference(const std::string& text, const std::string& key) {
  const std::unique_ptr<char, Release<g_free>> hex(g_compute_hmac_for_data(
      G_CHECKSUM_SHA1, reinterpret_cast<const guchar*>(key.data()), key.size(),
      reinterpret_cast<const guchar*>(text.data()), text.size()));
  return hex.get();
}

std::string bytesFromOneTo(int last) {
  std::string bytes;
  for (int i = 1; i <= last; ++i) bytes += static_cast<char>(i);
  return bytes;
}

TEST(HmacSha1Test, agreesWithTheStandardsVectors) {
  const struct {
    std::string key;
    std::string text;
    const char* digest;
  } vectors[] = {
      {std::string(20, '\x0b'), "Hi There", "b617318655057264e28bc0b6fb378c8ef146be00"},
      {"Jefe", "what do ya want for nothing?", "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
      {std::string(20, '\xaa'), std::string(50, '\xdd'),
       "125d7342b9ac11cd91a39af48aa17b4f63f175d3"},
      {bytesFromOneTo(25), std::string(50, '\xcd'), "4c9007f4026250c6bc8414f9bf50c86c2d7235da"},
      {std::string(20, '\x0c'), "Test With Truncation", "4c1a03424b55e07fe7f27be1d58bb9324a9a5a04"},
      {std::string(80, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
       "aa4ae5e15272d00e95705637ce8a3b55ed402112"},
      {std::string(80, '\xaa'),
       "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
       "e8e99d0f45237d786d6bbaa7965c7808bbff1a91"},
  };
  for (const auto& vector : vectors) EXPECT_EQ(hmac(vector.text, vector.key), vector.digest);
}

TEST(HmacSha1Test, keysAroundABlock) {
  for (std::size_t size = 0; size <= 200; ++size) {
    const std::string key(size, 'k');
    EXPECT_EQ(hmac("text", key), reference("text", key)) << size;
  }
}

TEST(HmacSha1Test, textsOfAnyLength) {
  for (const std::size_t size : {0u, 1u, 63u, 64u, 4031u, 4032u, 4033u, 4096u, 5000u, 1000000u}) {
    const std::string text(size, 't');
    EXPECT_EQ(hmac(text, "key"), reference(text, "key")) << size;
  }
}

TEST(HmacSha1Test, oneObjectSignsAnewEachTime) {
  HmacSha1 hmac;
  std::array<unsigned char, HmacSha1::kDigestSize> first{};
  std::array<unsigned char, HmacSha1::kDigestSize> other{};
  std::array<unsigned char, HmacSha1::kDigestSize> again{};
  hmac.sign("text", "key", first);
  hmac.sign(std::string(9000, 'x'), std::string(100, 'y'), other);
  hmac.sign("text", "key", again);
  EXPECT_EQ(first, again);
  EXPECT_NE(first, other);
}

}  // namespace
}  // namespace morvik::test
