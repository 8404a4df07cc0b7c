// Bytes of a terminal to keys.
#include "terminal/keys.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace morvik::devkit {
namespace {

constexpr char kEscape = '\x1b';

std::size_t characterLength(unsigned char first) {
  if (first >= 0xf0) return 4;
  if (first >= 0xe0) return 3;
  return first >= 0xc0 ? 2 : 1;
}

}  // namespace

// "\x1b[" or "\x1bO", parameters, and a letter or "~" at the end. 0 when it is no sequence.
std::size_t KeySplitter::sequenceLength() const {
  if (bytes_.size() < 3 || bytes_[0] != kEscape || (bytes_[1] != '[' && bytes_[1] != 'O')) return 0;
  const auto end = std::find_if(bytes_.begin() + 2, bytes_.end(),
                                [](char byte) { return byte >= '@' && byte <= '~'; });
  return end == bytes_.end() ? 0 : static_cast<std::size_t>(end - bytes_.begin()) + 1;
}

std::optional<std::string> KeySplitter::next() {
  while (const std::size_t sequence = sequenceLength()) bytes_.erase(0, sequence);
  if (bytes_.empty()) return std::nullopt;
  const std::size_t length = characterLength(static_cast<unsigned char>(bytes_[0]));
  if (bytes_.size() < length) return std::nullopt;
  std::string key = bytes_.substr(0, length);
  bytes_.erase(0, length);
  return key == "\r" ? "\n" : key;
}

Keys::Keys(int descriptor, Pressed pressed, Closed closed)
    : descriptor_(descriptor),
      pressed_(std::move(pressed)),
      closed_(std::move(closed)),
      source_(whenReadable(descriptor, [this] { return take(); })) {}

// Whoever hears of a key must not end the reading. What is typed while another program is in front
// is that program's.
bool Keys::take() {
  if (isatty(descriptor_) == 1 && tcgetpgrp(descriptor_) != getpgrp()) return true;
  std::array<char, 256> bytes{};
  const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  if (count <= 0) {
    closed_();
    return false;
  }
  splitter_.feed({bytes.data(), static_cast<std::size_t>(count)});
  while (const auto key = splitter_.next()) pressed_(*key);
  return true;
}

}  // namespace morvik::devkit
