// Reading a verb's options: help, and one way to refuse.
#pragma once

#include <optional>
#include <string>

#include "device/owned.h"

namespace morvik::devkit {

struct VerbHelp {
  const char* name;
  const char* summary;      // what it does, in a few lines
  const char* description;  // below the options: examples
  const char* arguments =
      nullptr;  // what it takes besides options; null for a verb that takes none
};

/// Reads the options of a verb, and answers --help. The entries of one that takes arguments end
/// with G_OPTION_REMAINING. Gives the exit status when the verb is to end at once, and nothing when
/// it is to run.
[[nodiscard]] std::optional<int> readOptions(const VerbHelp& help, const GOptionEntry* entries,
                                             int argc, char** argv);

/// Says on standard error what is wrong with the command line; the exit status for it.
int refuseUsage(const std::string& verb, const std::string& text);

}  // namespace morvik::devkit
