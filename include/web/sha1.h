// SHA-1 (FIPS 180-1).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace morvik {

/// One running hash: any number of updates, then final, then getHash. After final the object must
/// be reset before it is used again.
class Sha1Hash {
 public:
  static constexpr std::size_t kBlockSize = 64;
  static constexpr std::size_t kDigestSize = 20;

  Sha1Hash();
  ~Sha1Hash();
  Sha1Hash(const Sha1Hash&) = delete;
  Sha1Hash& operator=(const Sha1Hash&) = delete;

  /// Starts a new message.
  void reset();
  void update(const unsigned char* bytes, std::uint32_t length);
  /// Ends the message and makes the digest. Nothing of the message stays behind.
  void final();
  void getHash(std::span<unsigned char, kDigestSize> target) const;

 private:
  using Word = std::uint32_t;

  void transform(const unsigned char* bytes);
  void wipe();

  std::array<Word, 5> state_;
  std::array<Word, 2> count_;  // bits of the message, low word first
  std::array<unsigned char, kBlockSize> buffer_;
  std::array<unsigned char, kDigestSize> digest_;
  std::array<Word, kBlockSize / sizeof(Word)> workspace_;
  Word* block_;  // the words that a transform works on
};

}  // namespace morvik
