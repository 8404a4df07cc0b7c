// Sums up /proc/PID/smaps.
#include "soak/memory.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace morvik::test {
namespace {

constexpr double kKibibytes = 1024;

// One mapping: its lines come one after the other, VmFlags as the last.
void add(Memory& memory, double& resident, const std::string& line) {
  std::istringstream words(line);
  std::string name;
  double kibibytes = 0;
  words >> name >> kibibytes;
  if (name == "Rss:") {
    resident = kibibytes / kKibibytes;
    memory.resident += resident;
  } else if (name == "Pss:") {
    memory.proportional += kibibytes / kKibibytes;
  } else if (name == "Private_Clean:" || name == "Private_Dirty:") {
    memory.own += kibibytes / kKibibytes;
  } else if (name == "VmFlags:" && line.find(" dc") != std::string::npos) {
    memory.engine += resident;
  }
}

}  // namespace

Memory memoryOf(pid_t process) {
  std::ifstream maps("/proc/" + std::to_string(process) + "/smaps");
  Memory memory;
  double resident = 0;
  for (std::string line; std::getline(maps, line);) add(memory, resident, line);
  if (memory.resident == 0)
    throw std::runtime_error("process " + std::to_string(process) + " has ended");
  return memory;
}

}  // namespace morvik::test
