// The program's command line.
#pragma once

#include <cstdint>

namespace morvik {

/// The launcher's settings, alive for the whole process. Texts point into the argument vector.
struct LaunchOptions {
  std::int32_t debug = 7;       ///< --debug=: how much of the log reaches standard error
  const char* app_folder = "";  ///< --app_folder=: parent of all application folders
  /// --lib_folder=: taken and never read; whatever it names changes nothing.
  const char* lib_folder = nullptr;
};

/// The text just behind `prefix`, or null when `argument` does not begin with it. A prefix with
/// nothing behind it matches and gives the empty text.
const char* optionValue(const char* argument, const char* prefix);

/// Reads every entry of the argument vector, the program's name included. Unknown entries are
/// passed over without a word; of a repeated option the last one counts.
void parseOptions(int count, char** vector, LaunchOptions& options);

}  // namespace morvik
