// The frame on the wire: four bytes, big-endian, give the length of the payload that follows. Pure
// functions over bytes; sockets are AppConnection's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace morvik::devkit {

inline constexpr std::size_t kFrameHeaderSize = 4;

/// The wire itself knows no limit. No application has a reason to send this much at once, so a
/// larger length means that the stream is not what it should be.
inline constexpr std::uint32_t kMaxPayload = 64U * 1024 * 1024;

/// The header in front of a payload of that length, and the length that a header tells.
std::string frameHeader(std::uint32_t length);
std::uint32_t payloadLength(std::string_view header);

/// The header and the payload in one piece, to be written at once: applications read a length only
/// when its four bytes arrive together.
std::string frameOf(std::string_view payload);

/// Puts whole payloads together from bytes that arrive in pieces of any size.
class FrameReader {
 public:
  /// Takes the next bytes of the stream.
  void feed(std::string_view bytes);

  /// The next whole payload, or nothing when more bytes are needed or the stream is broken.
  std::optional<std::string> next();

  /// The length above kMaxPayload that broke the stream. There is no way back from it, since nobody
  /// can tell where the next frame begins.
  std::optional<std::uint32_t> brokenBy() const { return brokenBy_; }

  /// Part of a frame has arrived and its rest has not.
  bool isInsideFrame() const { return position_ < buffer_.size(); }

 private:
  std::optional<std::uint32_t> waitingLength();
  void dropRead();

  std::string buffer_;
  std::size_t position_ = 0;  // of the first byte that is in no returned payload
  std::optional<std::uint32_t> brokenBy_;
};

}  // namespace morvik::devkit
