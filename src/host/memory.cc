// The limit on an application's memory, and the net below every library that meets it.
#include "host/memory.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <array>
#include <csignal>
#include <cstdio>

#include "host/logging.h"
#include "host/system-log.h"

namespace morvik {
namespace {

// Room for the text of an end, and for handlers that run when the usual stack is used up.
constexpr std::size_t kTextSize = 512;
constexpr std::size_t kHandlerStack = 65536;

// A process that cannot have this much more is at its limit. Far more than any of the pieces that a
// library takes without looking at the answer, so that none of them crashes above it.
constexpr std::size_t kLastRoom = 16777216;

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's shadow of the whole address space counts as data, so that no process would start
// within the limit; and it has handlers of its own for what crashes.
constexpr bool kLimited = false;
#else
constexpr bool kLimited = true;
#endif

// Only the soft limit, and only the data: what is reserved and not used, as the engine does, and
// what is shared with other processes, does not count. Scripts cannot change it.
void limitData() {
  rlimit limit{};
  if (getrlimit(RLIMIT_DATA, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY) return;
  limit.rlim_cur = kMaxData;
  setrlimit(RLIMIT_DATA, &limit);
}

bool memoryIsGone() {
  void* room = mmap(nullptr, kLastRoom, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (room == MAP_FAILED) return true;
  munmap(room, kLastRoom);
  return false;
}

[[noreturn]] void newFailed() {
  endForWantOfMemory("the application has reached the limit of its memory");
}

// Libraries meet a lack of memory in ways of their own: the script engine aborts where it cannot
// format a date, and GLib, which cannot form the message about it, tries for ever until the stack
// is used up. Whoever reads the log must find the reason there and not a bare signal. A crash is
// put down to memory where none is left at that moment, which is likely the reason and not proved
// to be; any other ends the process by its own signal, as without this.
void crashed(int signal) {
  sendHeldRecords();
  if (memoryIsGone()) newFailed();
  std::raise(signal);  // its handler is gone, so this ends the process on return
}

void catchCrashes() {
  static std::array<char, kHandlerStack> stack;
  stack_t alternate{};
  alternate.ss_sp = stack.data();
  alternate.ss_size = stack.size();
  sigaltstack(&alternate, nullptr);
  struct sigaction action {};
  action.sa_handler = crashed;
  action.sa_flags = SA_ONSTACK | static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL}) sigaction(signal, &action, nullptr);
}

}  // namespace

void limitMemory() {
  std::set_new_handler(newFailed);
  if (!kLimited) return;
  limitData();
  catchCrashes();
}

void endForWantOfMemory(const char* reason) {
  std::array<char, kTextSize> text{};
  std::snprintf(text.data(), text.size(), "script engine out of memory: %s", reason);
  endFatally(text.data());
}

}  // namespace morvik
