// What verbs share that run folders at a desk.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "desk.h"
#include "options.h"

namespace morvik::devkit {

/// A verb that does as `run` does, and something of its own.
struct RunKind {
  VerbHelp help;
  const char* host = "morvikvm";  ///< the name of the host that it launches with
  /// Options of its own. One that has the name of an option of `run` takes it; that one is called
  /// `renamed` then.
  std::vector<GOptionEntry> entries = {};
  const char* renamed = nullptr;
  /// Completes the plan; gives what makes no sense.
  std::function<std::optional<std::string>(DeskPlan& plan)> complete = {};
};

/// Runs the verb; its exit status.
int runFolders(const RunKind& kind, int argc, char** argv);

}  // namespace morvik::devkit
