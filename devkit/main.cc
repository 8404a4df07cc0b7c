// morvik-dev, the companion of people who write applications. Its first argument says what to do.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "verbs.h"

namespace {

using morvik::devkit::kUsageError;

struct Verb {
  const char* name;
  const char* purpose;  // null for one that is for shells alone
  int (*run)(int argc, char** argv);
};

int help(int argc, char** argv);

constexpr Verb kVerbs[] = {
    {"new", "make the folder of a new application", morvik::devkit::runNew},
    {"run", "run applications on a device to look at, press and talk to", morvik::devkit::runRun},
    {"debug", "run applications that a debugger can attach to", morvik::devkit::runDebug},
    {"device", "run a virtual device that applications connect to", morvik::devkit::runDevice},
    {"log", "stand in for the system log on a machine that has none", morvik::devkit::runLog},
    {"why", "tell why applications ended", morvik::devkit::runWhy},
    {"check", "tell what is wrong with applications", morvik::devkit::runCheck},
    {"test", "test an application by a script", morvik::devkit::runTest},
    {"types", "write typings that fit an application, for editors", morvik::devkit::runTypes},
    {"sim", "do something to the device of a running tool, or wait for it", morvik::devkit::runSim},
    {"config", "make config.bin of a text, show it, change it", morvik::devkit::runConfig},
    {"api", "tell what a script can call", morvik::devkit::runApi},
    {"complete", nullptr, morvik::devkit::runComplete},
    {"help", "show this, or what one of them takes", help},
};

bool asksForHelp(const char* argument) {
  return std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0;
}

const Verb* find(const char* name) {
  const auto* found = std::find_if(std::begin(kVerbs), std::end(kVerbs), [name](const Verb& verb) {
    return std::strcmp(verb.name, name) == 0;
  });
  return found != std::end(kVerbs) ? found : nullptr;
}

bool asksForVersion(const char* argument) { return std::strcmp(argument, "--version") == 0; }

int showVersion() {
  std::puts("morvik-dev " MORVIK_VERSION);
  return 0;
}

int refuseVerb(const char* name) {
  std::fprintf(stderr, "morvik-dev: there is no verb %s. morvik-dev help lists them.\n", name);
  return kUsageError;
}

int showVerbs() {
  std::puts(
      "morvik-dev helps to write applications for MorvikVM.\n\n"
      "Usage: morvik-dev VERB [OPTION...]\n\nVerbs:");
  for (const Verb& verb : kVerbs) {
    if (verb.purpose != nullptr) std::printf("  %-8s  %s\n", verb.name, verb.purpose);
  }
  std::puts(
      "\nmorvik-dev help VERB tells more about one of them, and so does VERB --help.\n"
      "morvik-dev --version tells the version.");
  return 0;
}

// Every verb tells what it takes when it is asked.
int help(int argc, char** argv) {
  if (argc < 2 || asksForHelp(argv[1])) return showVerbs();
  const Verb* verb = find(argv[1]);
  if (verb == nullptr) return refuseVerb(argv[1]);
  if (verb->run == help) return showVerbs();
  char option[] = "--help";
  char* arguments[] = {argv[1], option, nullptr};
  return verb->run(2, arguments);
}

}  // namespace

int main(int argc, char** argv) {
  // A line is to be seen when it is written, also by a program that reads from a pipe.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  if (argc < 2) return showVerbs();
  if (asksForHelp(argv[1])) return help(argc - 1, argv + 1);
  if (asksForVersion(argv[1])) return showVersion();
  const Verb* verb = find(argv[1]);
  return verb != nullptr ? verb->run(argc - 1, argv + 1) : refuseVerb(argv[1]);
}
