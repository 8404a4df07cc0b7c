// One byte or two for each character, to UTF-8.
#include "debug/inspector-text.h"

#include "device/owned.h"

namespace morvik::devkit {
namespace {

// One byte for each character up to U+00FF.
std::string fromOneByte(const v8_inspector::StringView& text) {
  const GText utf8(g_convert(reinterpret_cast<const char*>(text.characters8()),
                             static_cast<gssize>(text.length()), "UTF-8", "ISO-8859-1", nullptr,
                             nullptr, nullptr));
  return utf8 ? utf8.get() : "";
}

// A half of a pair that stands alone has no UTF-8.
std::string fromTwoBytes(const v8_inspector::StringView& text) {
  std::string utf8;
  const auto* units = text.characters16();
  for (std::size_t at = 0; at < text.length();) {
    const bool isPair = at + 1 < text.length() && (units[at] & 0xFC00U) == 0xD800U &&
                        (units[at + 1] & 0xFC00U) == 0xDC00U;
    gunichar character = units[at];
    if (isPair) {
      character = 0x10000U + ((units[at] & 0x3FFU) << 10U) + (units[at + 1] & 0x3FFU);
    } else if ((units[at] & 0xF800U) == 0xD800U) {
      character = 0xFFFDU;
    }
    char bytes[6];
    utf8.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
    at += isPair ? 2 : 1;
  }
  return utf8;
}

}  // namespace

std::string utf8Of(const v8_inspector::StringView& text) {
  if (text.length() == 0) return "";
  return text.is8Bit() ? fromOneByte(text) : fromTwoBytes(text);
}

std::unique_ptr<v8_inspector::StringBuffer> bufferOf(const std::string& utf8) {
  const GText valid(g_utf8_make_valid(utf8.data(), static_cast<gssize>(utf8.size())));
  glong length = 0;
  const std::unique_ptr<gunichar2, Release<g_free>> units(
      g_utf8_to_utf16(valid.get(), -1, nullptr, &length, nullptr));
  return v8_inspector::StringBuffer::create({units.get(), static_cast<std::size_t>(length)});
}

v8_inspector::StringView protocolView(std::string_view message) {
  return {reinterpret_cast<const std::uint8_t*>(message.data()), message.size()};
}

}  // namespace morvik::devkit
