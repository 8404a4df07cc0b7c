// morvikvm-debug: the host for authors, with a debugger. Takes the options of morvikvm, and
// --inspect, --inspect-brk and --inspect-id.
#include <cstdio>
#include <string>

#include "debug/hooks.h"
#include "host/launcher.h"

int main(int argc, char** argv) {
  constexpr int kUsageStatus = 2;
  std::string trouble;
  const auto options = morvik::devkit::readInspectOptions(argc, argv, trouble);
  if (!options) {
    std::fprintf(stderr, "morvikvm-debug: %s\n", trouble.c_str());
    return kUsageStatus;
  }
  morvik::devkit::setUpDebugging(*options);
  return morvik::runLauncher(argc, argv);
}
