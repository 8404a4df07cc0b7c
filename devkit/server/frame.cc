// The frame on the wire, written and read.
#include "server/frame.h"

#include <glib.h>

#include <cstring>

namespace morvik::devkit {

std::string frameHeader(std::uint32_t length) {
  const std::uint32_t word = g_htonl(length);
  return {reinterpret_cast<const char*>(&word), kFrameHeaderSize};
}

std::uint32_t payloadLength(std::string_view header) {
  std::uint32_t word = 0;
  std::memcpy(&word, header.data(), kFrameHeaderSize);
  return g_ntohl(word);
}

std::string frameOf(std::string_view payload) {
  return frameHeader(static_cast<std::uint32_t>(payload.size())).append(payload);
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
  const std::uint32_t length = payloadLength(std::string_view(buffer_).substr(position_));
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
