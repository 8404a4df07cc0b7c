// Records and folders for tests of launches.
#include "launched.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "run/duration.h"
#include "support/file-content.h"

namespace morvik::test {

using namespace devkit;

bool LaunchRecord::said(const std::string& text) const {
  return std::ranges::any_of(lines, [&text](const LogLine& line) { return line.text == text; });
}

std::string LaunchRecord::transcript() const {
  std::ostringstream text;
  for (const LogLine& line : lines) {
    text << timeOfDay(line.time) << ' ' << line.app << '[' << line.pid << "] " << wordOf(line.level)
         << ": " << line.text << '\n';
  }
  for (const Hint& hint : hints) text << "hint " << nameOf(hint.kind) << ": " << hint.text << '\n';
  for (const End& end : ends) {
    text << "end " << nameOf(end.kind) << ": " << headlineOf(end) << ": " << end.sentence << ' '
         << end.cure << '\n';
  }
  return text.str();
}

void Apps::file(const std::string& app, const std::string& name, const std::string& content) const {
  const std::filesystem::path folder = folder_.path() / app;
  std::filesystem::create_directories(folder);
  std::ofstream(folder / name, std::ios::binary) << content;
}

void Apps::app(const std::string& name, const std::string& mainJs,
               const std::vector<std::string>& accesses) const {
  std::string names;
  for (const std::string& access : accesses) names += "<access>" + access + "</access>";
  file(name, "descriptor.xml", "<descriptor><accesses>" + names + "</accesses></descriptor>");
  file(name, "main.js", mainJs);
}

LaunchPlan planOf(const Apps& apps, std::vector<std::string> lines) {
  LaunchPlan plan;
  plan.host = PROGRAMS "/morvikvm";
  plan.appFolder = apps.path();
  plan.lines = std::move(lines);
  // Leaks are not looked for here: the host's own tests end it in all these ways with a look at
  // what is left.
  plan.environment = {
      "ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0:allocator_may_return_null=1:"
      "handle_segv=0"};
  return plan;
}

void shortenTimers(LaunchPlan& plan, unsigned fromMs) {
  plan.environment.emplace_back("LD_PRELOAD=" SHORT_TIMERS);
  plan.environment.push_back("SHORT_TIMERS_FROM=" + std::to_string(fromMs));
}

std::vector<pid_t> children() {
  const std::string self = std::to_string(getpid());
  std::istringstream names(test::contentOf("/proc/" + self + "/task/" + self + "/children"));
  std::vector<pid_t> pids;
  for (pid_t pid = 0; names >> pid;) pids.push_back(pid);
  return pids;
}

}  // namespace morvik::test
