// Bytes to text.
#include "run/log-text.h"

#include <algorithm>

#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

constexpr std::size_t kEscapeLength = 4;  // a backslash and three octal digits

bool isOctal(char c) { return c >= '0' && c <= '7'; }

bool isEscape(std::string_view text) {
  return text.size() >= kEscapeLength && text[0] == '\\' && text[1] >= '0' && text[1] <= '3' &&
         isOctal(text[2]) && isOctal(text[3]);
}

char byteOf(std::string_view escape) {
  return static_cast<char>((escape[1] - '0') * 64 + (escape[2] - '0') * 8 + (escape[3] - '0'));
}

// The bytes of all escapes that follow each other from here.
std::string runOfEscapes(std::string_view text) {
  std::string bytes;
  for (; isEscape(text); text.remove_prefix(kEscapeLength)) bytes += byteOf(text);
  return bytes;
}

bool isReadable(const std::string& bytes) {
  const bool ascii =
      std::ranges::any_of(bytes, [](char c) { return static_cast<signed char>(c) >= 0; });
  return !ascii &&
         g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) != FALSE;
}

// A backslash that is escaped itself begins no escape.
std::size_t plainLength(std::string_view text) {
  return text[0] == '\\' && text.size() > 1 ? 2 : 1;
}

}  // namespace

std::string fromScriptBytes(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

std::string withoutEscapes(std::string_view dump) {
  std::string text;
  while (!dump.empty()) {
    const std::string bytes = runOfEscapes(dump);
    const bool readable = !bytes.empty() && isReadable(bytes);
    const std::size_t taken = bytes.empty() ? plainLength(dump) : bytes.size() * kEscapeLength;
    text += readable ? bytes : dump.substr(0, taken);
    dump.remove_prefix(taken);
  }
  return text;
}

std::string harmless(const std::string& text) {
  std::string lines;
  std::string_view rest = text;
  while (true) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string line(rest.substr(0, end));
    std::ranges::replace(line, '\t', ' ');
    lines += printable(line);
    if (end == rest.size()) return lines;
    lines += '\n';
    rest.remove_prefix(end + 1);
  }
}

std::string withIndentedLines(const std::string& text, std::string_view indent) {
  std::string lines;
  for (const char c : text) {
    lines += c;
    if (c == '\n') lines += indent;
  }
  return lines;
}

std::string_view firstLine(std::string_view text) { return text.substr(0, text.find('\n')); }

}  // namespace morvik::devkit
