// Guessing a response's charset, converting it to UTF-8, and percent-escaping.
#include "web/encoding.h"

#include <glib.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "web/owned-curl.h"

namespace morvik {
namespace {

constexpr const char* kTarget = "UTF-8";
// How far into a body its own word on the charset is looked for.
constexpr std::size_t kSearched = 200;
constexpr std::size_t kNameSize = 100;
using Name = std::array<char, kNameSize>;

class Converter {
 public:
  explicit Converter(const char* from) : handle_(iconv_open(kTarget, from)) {}
  ~Converter() { close(); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  [[nodiscard]] bool opened() const { return handle_ != kNone; }
  /// One call for all; the arguments then tell what is left. What the converter itself still holds
  /// is not asked for, on purpose: of a body that ends within a charset's composed character, the
  /// script misses that last character.
  [[nodiscard]] bool convert(char*& in, std::size_t& inLeft, char*& out, std::size_t& outLeft) {
    return iconv(handle_, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
  }
  bool close() {
    const iconv_t open = std::exchange(handle_, kNone);
    return open == kNone || iconv_close(open) != -1;
  }

 private:
  static inline const auto kNone = std::bit_cast<iconv_t>(std::intptr_t{-1});
  iconv_t handle_;
};

const char* textOf(const HttpBuffer& buffer) {
  return buffer.data ? reinterpret_cast<const char*>(buffer.data.get()) : "";
}

// What follows the word and the one character after it, never beyond the buffer's end; null without
// the word.
const char* behind(const char* word, const HttpBuffer& buffer, std::size_t limit) {
  const char* text = textOf(buffer);
  const char* found = g_strstr_len(text, static_cast<gssize>(limit), word);
  if (found == nullptr) return nullptr;
  return std::min(found + std::strlen(word) + 1, text + buffer.len);
}

// The body's claim has priority over the headers', even when it is wrong.
const char* charsetClaim(const HttpBuffer& body, const HttpBuffer& headers) {
  if (const char* claim = behind("encoding", body, std::min(body.len, kSearched))) return claim;
  g_debug("encoding not in data");
  if (const char* claim = behind("charset", headers, headers.len)) return claim;
  g_debug("encoding not in header");
  return nullptr;
}

bool isQuote(char character) { return character == '"' || character == '\''; }

char upper(char character) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
}

// Capitals, up to the end or to a quote of either kind, whichever one opened the name.
const char* normalise(Name& name) {
  const bool quoted = isQuote(name[0]);
  name[0] = upper(name[0]);
  for (std::size_t i = 1; name[i] != '\0'; ++i) {
    if (isQuote(name[i])) {
      name[i] = '\0';
      break;
    }
    name[i] = upper(name[i]);
  }
  return quoted ? &name[1] : &name[0];
}

// Standard output is for whoever started the program, not the log. Each line is out at once.
void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

// Deliberately no more room than an eighth above the body: a text in a one-byte charset that is
// mostly beyond ASCII does not fit and reaches the script unconverted.
std::size_t roomFor(std::size_t length) { return length + (length >> 3); }

MallocBytes allocate(std::size_t size) {
  MallocBytes memory(static_cast<unsigned char*>(std::malloc(std::max<std::size_t>(size, 1))));
  if (!memory) endWithoutMemory("malloc fail");
  return memory;
}

void convert(HttpBuffer& body, const char* charset) {
  const std::size_t room = roomFor(body.len);
  MallocBytes converted = allocate(room);
  Converter converter(charset);
  if (!converter.opened()) {
    return say(std::string("Failed to iconv_open ") + charset + " to " + kTarget + ".");
  }

  char* in = const_cast<char*>(textOf(body));  // iconv reads it only
  char* out = reinterpret_cast<char*>(converted.get());
  std::size_t inLeft = body.len;
  std::size_t outLeft = room;
  if (!converter.convert(in, inLeft, out, outLeft)) {
    return say("Fail to convert characters to new code set in remaining " + std::to_string(inLeft) +
               " out remaining " + std::to_string(outLeft) + ".");
  }
  g_debug("in remaining %zu out remaining %zu.\n", inLeft, outLeft);
  if (!converter.close()) say("Fail to iconv_close.");
  body.data = std::move(converted);
  body.len = room - outLeft;
}

}  // namespace

void convertResponseToUtf8(HttpBuffer& body, const HttpBuffer& headers) {
  const char* claim = charsetClaim(body, headers);
  if (claim == nullptr) return;
  Name token{};
  // Takes in everything up to the next white space. No token leaves the name empty, and an empty
  // name is a name like any other.
  static_cast<void>(std::sscanf(claim, "%50s", token.data()));
  const char* charset = normalise(token);
  g_debug("encoding: %s", charset);
  if (std::strcmp(charset, kTarget) == 0) {
    g_debug("already UTF-8");
    return;
  }
  convert(body, charset);
}

void urlEncode(const char* text, char** out) {
  if (out == nullptr) return g_warning("urlEncode : URL encoding failed");
  const CurlEasy handle(curl_easy_init());  // libcurl asks for one; nothing is sent
  const std::size_t length = std::min<std::size_t>(std::strlen(text), INT_MAX);
  *out = curl_easy_escape(handle.get(), text, static_cast<int>(length));
  // A warning on purpose: what is escaped, both secrets of a signature included, stands in the log
  // at its usual levels.
  g_warning("urlEncode : Encoded URL: %s\n", *out != nullptr ? *out : "");
}

// In pieces, since libcurl escapes no more than some megabytes at a time. Every byte is escaped by
// itself, so that pieces give the same as the whole.
std::string percentEscaped(std::string_view text) {
  constexpr std::size_t kPiece = 1 << 20;
  std::string escaped;
  for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
    const auto length = static_cast<int>(std::min(kPiece, text.size()));
    const CurlText piece(curl_escape(text.data(), length));
    if (!piece) endWithoutMemory("realloc() failed");
    escaped += piece.get();
  }
  return escaped;
}

}  // namespace morvik
