// Beside this program first, as in a build, then in the PATH.
#include "usual-programs.h"

#include <filesystem>

#include "device/owned.h"

namespace morvik::devkit {

namespace fs = std::filesystem;

std::string ownProgram() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error);
}

std::string besideProgram(const std::string& name) {
  return fs::path(ownProgram()).parent_path() / name;
}

std::string usualHost(const char* name) {
  std::string beside = besideProgram(name);
  std::error_code error;
  if (fs::exists(beside, error)) return beside;
  const GText found(g_find_program_in_path(name));
  return found ? found.get() : beside;
}

}  // namespace morvik::devkit
