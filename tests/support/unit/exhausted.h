// A process that has no memory left, for a death test.
#pragma once

#include <cstdlib>

#include "host/logging.h"
#include "host/memory.h"

#ifndef __SANITIZE_ADDRESS__  // it has an allocator and handlers of its own
namespace morvik::test {

/// Takes all memory, from the largest piece to the smallest, until there is none.
inline void takeAll() {
  for (std::size_t size = 1 << 20; size >= 16; size = size > 2048 ? size / 2 : size - 8) {
    void* piece = nullptr;
    do {
      piece = std::malloc(size);
      asm volatile("" ::"r"(piece) : "memory");  // it counts that it is taken
    } while (piece != nullptr);
  }
}

/// Takes everything that an application may have before `use` asks for more.
template <typename Use>
void exhaustAnd(Use use) {
  static LaunchOptions options;
  openLog(options, "/nowhere");
  limitMemory();
  takeAll();
  use();
}

}  // namespace morvik::test
#endif
