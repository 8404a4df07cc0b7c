#include "compare/machine.h"

#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <fstream>

#include "support/program.h"

namespace morvik::bench {
namespace {

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "unknown";
}

std::string kernel() {
  utsname names{};
  uname(&names);
  return std::string(names.sysname) + " " + names.release + " " + names.machine;
}

std::string memory() {
  struct sysinfo info {};
  sysinfo(&info);
  const double gib = static_cast<double>(info.totalram) * info.mem_unit / (1 << 30);
  char text[32];
  std::snprintf(text, sizeof text, "%.1f GiB", gib);
  return text;
}

// The first line that a program says of its version; "none" when it cannot be run.
std::string versionOf(const char* program) {
  const auto [status, output] = test::run({"/usr/bin/env", program, "--version"});
  return status == 0 ? output.substr(0, output.find('\n')) : "none";
}

std::string date() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%F %R UTC", std::gmtime(&now));
  return text;
}

}  // namespace

std::vector<Fact> machineFacts() {
  return {{"date", date()},
          {"processor", processor()},
          {"cores", std::to_string(sysconf(_SC_NPROCESSORS_ONLN))},
          {"memory", memory()},
          {"kernel", kernel()},
          {"Node.js", versionOf("node")},
          {"gjs", versionOf("gjs")}};
}

}  // namespace morvik::bench
