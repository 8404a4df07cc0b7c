// morvik-dev, the companion of people who write applications. Its first argument says what to do.
#include <cstdio>
#include <cstring>
#include <iterator>

#include "verbs.h"

namespace {

using morvik::devkit::kUsageError;

struct Verb {
  const char* name;
  const char* purpose;
  int (*run)(int argc, char** argv);
};

int showHelp(int argc, char** argv);

constexpr Verb kVerbs[] = {
    {"device", "run a virtual device that applications connect to", morvik::devkit::runDevice},
    {"log", "stand in for the system log on a machine that has none", morvik::devkit::runLog},
    {"help", "show this", showHelp},
};

int showHelp(int /*argc*/, char** /*argv*/) {
  std::puts(
      "morvik-dev helps to write applications for MorvikVM.\n\n"
      "Usage: morvik-dev VERB [OPTION...]\n\nVerbs:");
  for (const Verb& verb : kVerbs) std::printf("  %-8s  %s\n", verb.name, verb.purpose);
  std::puts("\nmorvik-dev VERB --help tells more about one of them.");
  return 0;
}

bool asksForHelp(const char* argument) {
  return std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0;
}

}  // namespace

int main(int argc, char** argv) {
  // A line is to be seen when it is written, also by a program that reads from a pipe.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  if (argc < 2 || asksForHelp(argv[1])) return showHelp(argc, argv);
  for (const Verb& verb : kVerbs) {
    if (std::strcmp(verb.name, argv[1]) == 0) return verb.run(argc - 1, argv + 1);
  }
  std::fprintf(stderr, "morvik-dev: there is no verb %s. morvik-dev help lists them.\n", argv[1]);
  return kUsageError;
}
