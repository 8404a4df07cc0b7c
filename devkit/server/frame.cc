// The frame on the wire, written and read.
#include "server/frame.h"

#include <glib.h>

#include <cstring>

namespace morvik::devkit {

std::string frameOf(std::string_view payload) {
  const std::uint32_t length = g_htonl(static_cast<std::uint32_t>(payload.size()));
  std::string frame(kFrameHeaderSize + payload.size(), '\0');
  std::memcpy(frame.data(), &length, kFrameHeaderSize);
  if (!payload.empty())
    std::memcpy(frame.data() + kFrameHeaderSize, payload.data(), payload.size());
  return frame;
}

void FrameReader::feed(std::string_view bytes) { buffer_.append(bytes); }

std::optional<std::string> FrameReader::next() {
  const std::optional<std::uint32_t> length = waitingLength();
  if (!length || buffer_.size() - position_ - kFrameHeaderSize < *length) {
    dropRead();
    return std::nullopt;
  }
  std::string payload = buffer_.substr(position_ + kFrameHeaderSize, *length);
  position_ += kFrameHeaderSize + *length;
  return payload;
}

std::optional<std::uint32_t> FrameReader::waitingLength() {
  if (brokenBy_ || buffer_.size() - position_ < kFrameHeaderSize) return std::nullopt;
  std::uint32_t word = 0;
  std::memcpy(&word, buffer_.data() + position_, kFrameHeaderSize);
  const std::uint32_t length = g_ntohl(word);
  if (length <= kMaxPayload) return length;
  brokenBy_ = length;
  return std::nullopt;
}

// Done once for all frames of one feed, so that many small frames cost one move.
void FrameReader::dropRead() {
  buffer_.erase(0, position_);
  position_ = 0;
}

}  // namespace morvik::devkit
