// Base64, beside GLib's.
#include <glib.h>

#include "fuzz/fuzz.h"
#include "web/base64.h"

namespace morvik::test {

void fuzz(std::string_view input) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(input.data());
  gchar* expected = g_base64_encode(bytes, input.size());
  require(base64Encode({bytes, input.size()}) == expected, "the same as GLib's");
  g_free(expected);
}

}  // namespace morvik::test
