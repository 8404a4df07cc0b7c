// What the sanitizers are told about the unit tests, in builds that have them: memory that cannot
// be had is for the code under test to meet, and leaks with the engine's library on their stack do
// not count, because it keeps memory in ways that the check cannot follow. Of our own, what is kept
// for life says so in its name.

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
  return "leak:libnode.so\nleak:KeptForLife\n";
}
}
