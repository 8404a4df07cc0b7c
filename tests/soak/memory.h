// What a process takes of the machine's memory, as the kernel tells it.
#pragma once

#include <sys/types.h>

namespace morvik::test {

/// In MiB.
struct Memory {
  double resident = 0;      ///< all of its pages that are in memory
  double proportional = 0;  ///< the same, each shared page divided by those who share it
  double own = 0;           ///< its pages that nobody shares
  double engine = 0;  ///< resident pages of the script engine's heap, which it marks for no fork
};

/// Throws std::runtime_error for a process that is not there.
Memory memoryOf(pid_t process);

}  // namespace morvik::test
