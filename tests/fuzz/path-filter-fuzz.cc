// File names of scripts: the filter lets exactly those pass that it is told to, and none of these
// leads out of the application's folder.
#include <filesystem>
#include <string>

#include "fuzz/fuzz.h"
#include "host/path-filter.h"

namespace morvik::test {
namespace {

constexpr char kFolder[] = "/apps/app/";
constexpr char kAllowed[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-/.";

bool mayPass(const std::string& name) {
  return name.find_first_not_of(kAllowed) == std::string::npos &&
         name.find("..") == std::string::npos && name.find("descriptor.xml") == std::string::npos;
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string name(input.substr(0, input.find('\0')));
  const bool forbidden = isForbiddenPath(name.c_str());
  require(forbidden != mayPass(name), "the filter does as told");
  if (forbidden) return;
  const std::filesystem::path path(kFolder + name);
  require(path.lexically_normal().native().starts_with(kFolder), "a name stays in the folder");
}

}  // namespace morvik::test
