// What /proc tells of a process.
#pragma once

#include <sys/types.h>

#include <vector>

namespace morvik::bench {

/// In MiB. Private pages are no other process's too; Pss counts a shared page as its share.
struct Memory {
  double privateClean = 0;
  double privateDirty = 0;
  double pss = 0;
};
Memory memoryOf(pid_t process);

/// Of all threads: the time on a core, in microseconds, and how often one went to sleep.
struct Activity {
  double cpu = 0;
  double sleeps = 0;
};
Activity activityOf(pid_t process);
Activity operator-(const Activity& later, const Activity& earlier);

/// The children of a process, oldest first.
std::vector<pid_t> childrenOf(pid_t process);

}  // namespace morvik::bench
