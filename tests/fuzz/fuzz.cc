// The entry points of libFuzzer.
#include "fuzz/fuzz.h"

#include <glib.h>
#include <libxml/xmlerror.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace morvik::test {

void require(bool claim, const char* text) {
  if (claim) return;
  std::fprintf(stderr, "does not hold: %s\n", text);
  std::abort();
}

namespace {

// The texts are formed, since that is part of what is tested, and go nowhere.
void dropLine(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* /*text*/,
              gpointer /*unused*/) {}

// What the XML library says on standard error of every damaged text.
void dropWords(void* /*unused*/, const char* /*format*/, ...) {}

}  // namespace
}  // namespace morvik::test

// The names are libFuzzer's.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);             // NOLINT
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, size_t size);  // NOLINT

// What the program says on standard output is not looked at.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {  // NOLINT
  g_log_set_default_handler(morvik::test::dropLine, nullptr);
  xmlSetGenericErrorFunc(nullptr, morvik::test::dropWords);
  return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, size_t size) {  // NOLINT
  morvik::test::fuzz({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
