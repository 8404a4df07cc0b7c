// The bytes that a transfer delivers, body or headers, as they come in.
#pragma once

#include <cstddef>
#include <string_view>

#include "host/owned.h"

namespace morvik {

/// Received bytes. After each write one NUL follows them that `len` does not count; a charset
/// conversion leaves none.
struct HttpBuffer {
  MallocBytes data;  ///< null until something was written
  std::size_t len = 0;

  [[nodiscard]] std::string_view bytes() const {
    return {reinterpret_cast<const char*>(data.get()), len};
  }
};

/// Replaces what the buffer holds. Without memory for it the process ends with status 1.
void assign(HttpBuffer& buffer, std::string_view bytes);

/// libcurl's receive function: appends size * count bytes to the HttpBuffer behind `buffer` and
/// gives their number. Grows the memory by exactly that; when it cannot, the process ends with
/// status 1.
std::size_t httpWriteCallback(char* data, std::size_t size, std::size_t count, void* buffer);

/// The end that a lack of memory has: a line in the log and status 1.
[[noreturn]] void endWithoutMemory(const char* text);

}  // namespace morvik
