// SHA-1: the standards' vectors, every way of cutting a message, and lengths beyond 32 bits of
// bits.
#include "web/sha1.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <memory>
#include <string>
#include <string_view>

#include "host/owned.h"

namespace morvik::test {
namespace {

void update(Sha1Hash& hash, std::string_view bytes) {
  hash.update(reinterpret_cast<const unsigned char*>(bytes.data()),
              static_cast<std::uint32_t>(bytes.size()));
}

std::string finish(Sha1Hash& hash) {
  hash.final();
  std::array<unsigned char, Sha1Hash::kDigestSize> digest{};
  hash.getHash(digest);
  std::string text;
  for (const unsigned char byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

std::string sha1(std::string_view bytes) {
  Sha1Hash hash;
  update(hash, bytes);
  return finish(hash);
}

std::string reference(std::string_view bytes) {
  const std::unique_ptr<char, Release<g_free>> text(g_compute_checksum_for_data(
      G_CHECKSUM_SHA1, reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
  return text.get();
}

std::string repeated(std::string_view piece, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

TEST(Sha1Test, agreesWithTheStandardsVectors) {
  const struct {
    std::string message;
    const char* digest;
  } vectors[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {repeated("a", 1000000), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {repeated("0123456701234567012345670123456701234567012345670123456701234567", 10),
       "dea356a2cddd90c7a7ecedc5ebb563934f460452"},
  };
  for (const auto& vector : vectors) EXPECT_EQ(sha1(vector.message), vector.digest);
}

TEST(Sha1Test, agreesForEveryLengthAroundABlock) {
  std::string message;
  for (int length = 0; length < 300; ++length) {
    EXPECT_EQ(sha1(message), reference(message)) << length;
    message += static_cast<char>(length * 7);
  }
}

TEST(Sha1Test, itDoesNotMatterHowAMessageIsCut) {
  const std::string message = repeated("The quick brown fox. ", 20);
  const std::string whole = reference(message);
  for (std::size_t first = 0; first <= 130; ++first) {
    for (const std::size_t second : {0U, 1U, 63U, 64U, 65U, 128U, 200U}) {
      Sha1Hash hash;
      update(hash, std::string_view(message).substr(0, first));
      update(hash, std::string_view(message).substr(first, second));
      update(hash, std::string_view(message).substr(first + second));
      EXPECT_EQ(finish(hash), whole) << first << " " << second;
    }
  }
}

// Nothing of a message stays behind: what a finished hash holds is the same for all, and it is not
// what a hash starts with.
TEST(Sha1Test, forgetsAMessageWithItsDigest) {
  Sha1Hash one;
  Sha1Hash another;
  update(one, "one message");
  update(another, "another message, which is longer");
  EXPECT_NE(finish(one), finish(another));
  update(one, "abc");
  update(another, "abc");
  const std::string unreset = finish(one);
  EXPECT_EQ(unreset, finish(another));
  // One transform of zeros upon zeros, and then the block of "abc".
  EXPECT_EQ(unreset, "db6635bfdbbef09f2c87c157f55dda0f6d91a713");
}

TEST(Sha1Test, aResetStartsAnew) {
  Sha1Hash hash;
  update(hash, "something else");
  finish(hash);
  hash.reset();
  update(hash, "abc");
  EXPECT_EQ(finish(hash), "a9993e364706816aba3e25717850c26c9cd0d89d");
  hash.reset();
  update(hash, "given up");
  hash.reset();
  EXPECT_EQ(finish(hash), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

// 540 million bytes have more than 2^32 bits: in one piece, and in pieces that carry over.
TEST(Sha1Test, countsBeyondThirtyTwoBits) {
  constexpr std::size_t kSize = 540'000'000;
  constexpr const char* kDigest = "aba0871f9d6e8689d24cffcb556d6d4161727e9f";
  void* zeros = mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(zeros, MAP_FAILED);
  const std::string_view message(static_cast<const char*>(zeros), kSize);
  EXPECT_EQ(sha1(message), kDigest);
  Sha1Hash hash;
  update(hash, message.substr(0, kSize / 2));
  update(hash, message.substr(kSize / 2));
  EXPECT_EQ(finish(hash), kDigest);
  munmap(zeros, kSize);
}

}  // namespace
}  // namespace morvik::test
