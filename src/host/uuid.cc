// Fresh UUIDs in lower case.
#include "host/uuid.h"

#include <pthread.h>
#include <sys/random.h>
#include <uuid/uuid.h>

#include <array>
#include <cstring>

namespace morvik {
namespace {

// What getentropy gives at once.
constexpr std::size_t kDrawn = 256;

// The system's random bytes, drawn for sixteen ids at a time: libuuid would draw, and seed the C
// library's generator anew, for each. No byte is given twice, also not to a parent and its child.
class RandomBytes {
 public:
  RandomBytes() { pthread_atfork(nullptr, nullptr, forgetKept); }

  void fill(uuid_t& bytes) {
    if (given_ == kDrawn) draw();
    std::memcpy(bytes, kept_.data() + given_, sizeof bytes);
    given_ += sizeof bytes;
  }

 private:
  static void forgetKept();

  // A system without getentropy has libuuid's way.
  void draw() {
    given_ = 0;
    if (getentropy(kept_.data(), kept_.size()) == 0) return;
    for (std::size_t at = 0; at < kDrawn; at += sizeof(uuid_t)) uuid_generate(&kept_.at(at));
  }

  std::array<unsigned char, kDrawn> kept_{};
  std::size_t given_ = kDrawn;
};

RandomBytes& randomBytesKeptForLife() {
  static RandomBytes bytes;
  return bytes;
}

void RandomBytes::forgetKept() { randomBytesKeptForLife().given_ = kDrawn; }

// What makes random bytes a UUID of version 4 (RFC 9562, section 5.4).
void mark(uuid_t& bytes) {
  constexpr unsigned char kVersion = 0x40;
  constexpr unsigned char kVariant = 0x80;
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | kVersion);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | kVariant);
}

}  // namespace

// Device servers compare the texts as they are, so no build of the library may choose capitals.
std::string newUuid() {
  uuid_t bytes;
  randomBytesKeptForLife().fill(bytes);
  mark(bytes);
  std::array<char, UUID_STR_LEN> text{};
  uuid_unparse_lower(bytes, text.data());
  return {text.data(), UUID_STR_LEN - 1};
}

}  // namespace morvik
