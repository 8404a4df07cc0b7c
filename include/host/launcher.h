// The launcher: reads launch lines, forks one child per application, counts and reaps children.
#pragma once

#include "host/launch-options.h"

namespace morvik {

/// Children alive at once, as the launcher counts them.
inline constexpr int kMaxApps = 3;

/// The whole program: options, log and engine limits, then launch lines from standard input until
/// a line that holds less than two characters. Returns the exit status, in the launcher and in each
/// child whose application has ended by itself.
int runLauncher(int argc, char** argv);

}  // namespace morvik
