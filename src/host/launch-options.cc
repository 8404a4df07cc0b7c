// The three options of the command line.
#include "host/launch-options.h"

#include <cstdlib>
#include <cstring>

namespace morvik {

// The text itself, not a copy: the argument vector outlives everything.
const char* optionValue(const char* argument, const char* prefix) {
  const std::size_t length = std::strlen(prefix);
  return std::strncmp(argument, prefix, length) == 0 ? argument + length : nullptr;
}

// The name at index 0 counts as well: nothing tells a caller's odd name from an option.
void parseOptions(int count, char** vector, LaunchOptions& options) {
  for (int i = 0; i < count; ++i) {
    if (const char* debug = optionValue(vector[i], "--debug=")) {
      options.debug = std::atoi(debug);  // what atoi makes of a bad number counts
    }
    if (const char* folder = optionValue(vector[i], "--app_folder=")) options.app_folder = folder;
    if (const char* folder = optionValue(vector[i], "--lib_folder=")) options.lib_folder = folder;
  }
}

}  // namespace morvik
