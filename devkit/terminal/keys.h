// The keys that somebody presses, one after the other.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "device/when-readable.h"

namespace morvik::devkit {

/// Puts keys together from bytes. A key is a character in UTF-8, a control character ("\n",
/// "\x7f"), or "\x1b" for Escape. Cursor keys and the like, which terminals send as sequences, are
/// dropped.
class KeySplitter {
 public:
  void feed(std::string_view bytes) { bytes_ += bytes; }
  /// The next whole key; nothing when there is none. An Escape that stands last is a key of its
  /// own.
  std::optional<std::string> next();

 private:
  std::size_t sequenceLength() const;

  std::string bytes_;
};

/// Reads keys on the default main loop.
class Keys {
 public:
  using Pressed = std::function<void(const std::string& key)>;
  using Closed = std::function<void()>;

  /// `closed` is called once, when there will be no more keys. The descriptor stays open.
  Keys(int descriptor, Pressed pressed, Closed closed);
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;

 private:
  bool take();

  int descriptor_;
  KeySplitter splitter_;
  Pressed pressed_;
  Closed closed_;
  GSourceAttached source_;
};

}  // namespace morvik::devkit
