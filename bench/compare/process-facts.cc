#include "compare/process-facts.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace morvik::bench {
namespace {

std::string folderOf(pid_t process) { return "/proc/" + std::to_string(process); }

// The number behind "name:" in a file of such lines; 0 when there is none.
double numberIn(const std::string& path, const std::string& name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1));
  return 0;
}

}  // namespace

Memory memoryOf(pid_t process) {
  const std::string path = folderOf(process) + "/smaps_rollup";
  const auto mib = [&](const char* name) { return numberIn(path, name) / 1024; };
  return {mib("Private_Clean"), mib("Private_Dirty"), mib("Pss")};
}

Activity activityOf(pid_t process) {
  Activity all;
  for (const auto& thread : std::filesystem::directory_iterator(folderOf(process) + "/task")) {
    double nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    all.cpu += nanoseconds / 1000;
    all.sleeps += numberIn(thread.path() / "status", "voluntary_ctxt_switches");
  }
  return all;
}

Activity operator-(const Activity& later, const Activity& earlier) {
  return {later.cpu - earlier.cpu, later.sleeps - earlier.sleeps};
}

std::vector<pid_t> childrenOf(pid_t process) {
  std::ifstream file(folderOf(process) + "/task/" + std::to_string(process) + "/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; file >> child;) children.push_back(child);
  return children;
}

}  // namespace morvik::bench
