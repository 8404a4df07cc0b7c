// What the sanitizers are told about the unit tests, in builds that have them: memory that cannot
// be had is for the code under test to meet, and what may be left at the end.
#include "support/leaks.h"

// The names are the sanitizers'.
extern "C" {
const char* __asan_default_options();       // NOLINT
const char* __lsan_default_options();       // NOLINT
const char* __lsan_default_suppressions();  // NOLINT
const char* __asan_default_options() {      // NOLINT
  return "allocator_may_return_null=1";
}
const char* __lsan_default_options() {  // NOLINT
  return "print_suppressions=0";
}
const char* __lsan_default_suppressions() {  // NOLINT
#ifdef __clang__  // which builds the fuzzers, and knows names of functions only beside a symbolizer
  return "leak:libnode.so\nleak:KeptForLife\n";
#else
  return morvik::test::kMayBeLeft;
#endif
}
}
