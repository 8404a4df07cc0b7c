// A copy of a part of a text, or the end of the process.
#include "devices/substring.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "host/memory.h"
#include "host/system-log.h"

namespace morvik {

std::unique_ptr<char[]> substring(const char* text, std::size_t start, std::size_t end) {
  const std::size_t length = end - start;
  const NewMayFail mayFail;
  std::unique_ptr<char[]> part(new (std::nothrow) char[length + 1]);
  if (!part) {
    sendHeldRecords();
    std::fputs("Memoire insuffisante\n", stderr);
    std::exit(1);
  }
  *std::copy_n(text + start, length, part.get()) = '\0';
  return part;
}

}  // namespace morvik
