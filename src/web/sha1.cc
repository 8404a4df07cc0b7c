// SHA-1. The eighty steps are written out, without a table and without a loop.
#include "web/sha1.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace morvik {
namespace {

using Word = std::uint32_t;

constexpr std::size_t kLengthAt = 56;  // in the last block, the length of the message stands here

// Bytes in the order of the standard: the highest first.
void putBigEndian(Word word, unsigned char* target) {
  for (int shift = 24; shift >= 0; shift -= 8)
    *target++ = static_cast<unsigned char>(word >> shift);
}

Word getBigEndian(const unsigned char* source) {
  return Word{source[0]} << 24 | Word{source[1]} << 16 | Word{source[2]} << 8 | Word{source[3]};
}

// The steps of one transform on the five working words. After a step its words have moved one place
// on: the caller names them in the new order instead of moving them.
class Steps {
 public:
  explicit Steps(Word* block) : block_(block) {}

  void run(std::array<Word, 5>& state) const {
    auto [a, b, c, d, e] = state;
    steps0to19(a, b, c, d, e);
    steps20to39(a, b, c, d, e);
    steps40to59(a, b, c, d, e);
    steps60to79(a, b, c, d, e);
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
  }

 private:
  [[nodiscard]] Word first(int step) const { return block_[step]; }

  // The sixteen words of the block are used again and again.
  [[nodiscard]] Word next(int step) const {
    Word& word = block_[step & 15];
    word = std::rotl(
        word ^ block_[(step + 13) & 15] ^ block_[(step + 8) & 15] ^ block_[(step + 2) & 15], 1);
    return word;
  }

  static void step(Word a, Word& b, Word& e, Word mixed, Word word, Word constant) {
    e += std::rotl(a, 5) + mixed + word + constant;
    b = std::rotl(b, 30);
  }
  static void choose(Word a, Word& b, Word c, Word d, Word& e, Word word) {
    step(a, b, e, (b & (c ^ d)) ^ d, word, 0x5a827999);
  }
  static void parity(Word a, Word& b, Word c, Word d, Word& e, Word word) {
    step(a, b, e, b ^ c ^ d, word, 0x6ed9eba1);
  }
  static void majority(Word a, Word& b, Word c, Word d, Word& e, Word word) {
    step(a, b, e, ((b | c) & d) | (b & c), word, 0x8f1bbcdc);
  }
  static void parityLate(Word a, Word& b, Word c, Word d, Word& e, Word word) {
    step(a, b, e, b ^ c ^ d, word, 0xca62c1d6);
  }

  void steps0to19(Word& a, Word& b, Word& c, Word& d, Word& e) const {
    choose(a, b, c, d, e, first(0));
    choose(e, a, b, c, d, first(1));
    choose(d, e, a, b, c, first(2));
    choose(c, d, e, a, b, first(3));
    choose(b, c, d, e, a, first(4));
    choose(a, b, c, d, e, first(5));
    choose(e, a, b, c, d, first(6));
    choose(d, e, a, b, c, first(7));
    choose(c, d, e, a, b, first(8));
    choose(b, c, d, e, a, first(9));
    choose(a, b, c, d, e, first(10));
    choose(e, a, b, c, d, first(11));
    choose(d, e, a, b, c, first(12));
    choose(c, d, e, a, b, first(13));
    choose(b, c, d, e, a, first(14));
    choose(a, b, c, d, e, first(15));
    choose(e, a, b, c, d, next(16));
    choose(d, e, a, b, c, next(17));
    choose(c, d, e, a, b, next(18));
    choose(b, c, d, e, a, next(19));
  }

  void steps20to39(Word& a, Word& b, Word& c, Word& d, Word& e) const {
    parity(a, b, c, d, e, next(20));
    parity(e, a, b, c, d, next(21));
    parity(d, e, a, b, c, next(22));
    parity(c, d, e, a, b, next(23));
    parity(b, c, d, e, a, next(24));
    parity(a, b, c, d, e, next(25));
    parity(e, a, b, c, d, next(26));
    parity(d, e, a, b, c, next(27));
    parity(c, d, e, a, b, next(28));
    parity(b, c, d, e, a, next(29));
    parity(a, b, c, d, e, next(30));
    parity(e, a, b, c, d, next(31));
    parity(d, e, a, b, c, next(32));
    parity(c, d, e, a, b, next(33));
    parity(b, c, d, e, a, next(34));
    parity(a, b, c, d, e, next(35));
    parity(e, a, b, c, d, next(36));
    parity(d, e, a, b, c, next(37));
    parity(c, d, e, a, b, next(38));
    parity(b, c, d, e, a, next(39));
  }

  void steps40to59(Word& a, Word& b, Word& c, Word& d, Word& e) const {
    majority(a, b, c, d, e, next(40));
    majority(e, a, b, c, d, next(41));
    majority(d, e, a, b, c, next(42));
    majority(c, d, e, a, b, next(43));
    majority(b, c, d, e, a, next(44));
    majority(a, b, c, d, e, next(45));
    majority(e, a, b, c, d, next(46));
    majority(d, e, a, b, c, next(47));
    majority(c, d, e, a, b, next(48));
    majority(b, c, d, e, a, next(49));
    majority(a, b, c, d, e, next(50));
    majority(e, a, b, c, d, next(51));
    majority(d, e, a, b, c, next(52));
    majority(c, d, e, a, b, next(53));
    majority(b, c, d, e, a, next(54));
    majority(a, b, c, d, e, next(55));
    majority(e, a, b, c, d, next(56));
    majority(d, e, a, b, c, next(57));
    majority(c, d, e, a, b, next(58));
    majority(b, c, d, e, a, next(59));
  }

  void steps60to79(Word& a, Word& b, Word& c, Word& d, Word& e) const {
    parityLate(a, b, c, d, e, next(60));
    parityLate(e, a, b, c, d, next(61));
    parityLate(d, e, a, b, c, next(62));
    parityLate(c, d, e, a, b, next(63));
    parityLate(b, c, d, e, a, next(64));
    parityLate(a, b, c, d, e, next(65));
    parityLate(e, a, b, c, d, next(66));
    parityLate(d, e, a, b, c, next(67));
    parityLate(c, d, e, a, b, next(68));
    parityLate(b, c, d, e, a, next(69));
    parityLate(a, b, c, d, e, next(70));
    parityLate(e, a, b, c, d, next(71));
    parityLate(d, e, a, b, c, next(72));
    parityLate(c, d, e, a, b, next(73));
    parityLate(b, c, d, e, a, next(74));
    parityLate(a, b, c, d, e, next(75));
    parityLate(e, a, b, c, d, next(76));
    parityLate(d, e, a, b, c, next(77));
    parityLate(c, d, e, a, b, next(78));
    parityLate(b, c, d, e, a, next(79));
  }

  Word* block_;
};

}  // namespace

Sha1Hash::Sha1Hash() : buffer_{}, digest_{}, workspace_{}, block_(workspace_.data()) { reset(); }

Sha1Hash::~Sha1Hash() { reset(); }

void Sha1Hash::reset() {
  state_ = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  count_ = {0, 0};
}

void Sha1Hash::transform(const unsigned char* bytes) {
  for (std::size_t i = 0; i < workspace_.size(); ++i) block_[i] = getBigEndian(bytes + 4 * i);
  Steps(block_).run(state_);
}

void Sha1Hash::update(const unsigned char* bytes, std::uint32_t length) {
  std::size_t index = (count_[0] >> 3) % kBlockSize;
  const Word bits = length << 3;
  count_[0] += bits;
  count_[1] += (length >> 29) + (count_[0] < bits ? 1 : 0);
  std::size_t taken = 0;
  if (index + length >= kBlockSize) {
    taken = kBlockSize - index;
    std::copy_n(bytes, taken, buffer_.begin() + static_cast<std::ptrdiff_t>(index));
    transform(buffer_.data());
    for (; taken + kBlockSize <= length; taken += kBlockSize) transform(bytes + taken);
    index = 0;
  }
  std::copy_n(bytes + taken, length - taken, buffer_.begin() + static_cast<std::ptrdiff_t>(index));
}

void Sha1Hash::final() {
  std::array<unsigned char, 8> length{};
  putBigEndian(count_[1], &length[0]);
  putBigEndian(count_[0], &length[4]);
  constexpr unsigned char kMark = 0x80;
  constexpr unsigned char kZero = 0x00;
  update(&kMark, 1);
  while ((count_[0] >> 3) % kBlockSize != kLengthAt) update(&kZero, 1);
  update(length.data(), static_cast<std::uint32_t>(length.size()));
  for (std::size_t i = 0; i < state_.size(); ++i) putBigEndian(state_[i], &digest_[4 * i]);
  explicit_bzero(length.data(), length.size());
  wipe();
}

// One more transform, so that the workspace holds nothing of the message either.
void Sha1Hash::wipe() {
  explicit_bzero(buffer_.data(), sizeof(buffer_));
  explicit_bzero(state_.data(), sizeof(state_));
  explicit_bzero(count_.data(), sizeof(count_));
  transform(buffer_.data());
}

void Sha1Hash::getHash(std::span<unsigned char, kDigestSize> target) const {
  std::copy(digest_.begin(), digest_.end(), target.begin());
}

}  // namespace morvik
