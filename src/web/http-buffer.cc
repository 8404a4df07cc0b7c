// Growing a receive buffer, and the end of the process where it cannot grow.
#include "web/http-buffer.h"

#include <glib.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace morvik {
namespace {

// Makes room for `size` bytes and the NUL behind them.
void resize(HttpBuffer& buffer, std::size_t size) {
  void* moved = size < PTRDIFF_MAX ? std::realloc(buffer.data.get(), size + 1) : nullptr;
  if (moved == nullptr) endWithoutMemory("realloc() failed");
  static_cast<void>(buffer.data.release());  // realloc has moved it
  buffer.data.reset(static_cast<unsigned char*>(moved));
  buffer.data.get()[size] = 0;
  buffer.len = size;
}

}  // namespace

// The parent sees status 1, which a refused start has too; the line, at debug level, tells them
// apart.
void endWithoutMemory(const char* text) {
  g_debug("%s", text);
  std::exit(1);
}

void assign(HttpBuffer& buffer, std::string_view bytes) {
  resize(buffer, bytes.size());
  if (!bytes.empty()) std::memcpy(buffer.data.get(), bytes.data(), bytes.size());
}

std::size_t httpWriteCallback(char* data, std::size_t size, std::size_t count, void* buffer) {
  HttpBuffer& held = *static_cast<HttpBuffer*>(buffer);
  const std::size_t end = held.len;
  std::size_t n = 0;
  std::size_t total = 0;
  const bool countable =
      !__builtin_mul_overflow(size, count, &n) && !__builtin_add_overflow(end, n, &total);
  resize(held, countable ? total : SIZE_MAX);
  if (n > 0) std::memcpy(held.data.get() + end, data, n);
  return n;
}

}  // namespace morvik
