// Charsets of responses: a body stays byte for byte what it was or becomes UTF-8. An input is the
// headers, an empty line, and the body.
#include <glib.h>

#include <algorithm>
#include <string>

#include "fuzz/fuzz.h"
#include "web/encoding.h"

namespace morvik::test {
namespace {

constexpr std::string_view kEnd = "\r\n\r\n";

// As a transfer leaves it.
HttpBuffer received(std::string_view bytes) {
  HttpBuffer buffer;
  if (!bytes.empty()) assign(buffer, bytes);
  return buffer;
}

bool isUtf8(std::string text) {
  std::ranges::replace(text, '\0', ' ');  // which GLib takes for an end
  return g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE;
}

}  // namespace

void fuzz(std::string_view input) {
  const std::size_t end = std::min(input.find(kEnd), input.size());
  const HttpBuffer headers = received(input.substr(0, end));
  const std::string body(input.substr(std::min(end + kEnd.size(), input.size())));
  HttpBuffer converted = received(body);
  convertResponseToUtf8(converted, headers);
  const std::string text(converted.bytes());
  require(text == body || isUtf8(text), "what is converted is UTF-8");
}

}  // namespace morvik::test
