// Descriptors: a damaged one has no names, and no name is granted that does not stand in the file.
#include <cstring>
#include <string>
#include <vector>

#include "features/features.h"
#include "fuzz/fuzz.h"
#include "fuzz/input-file.h"
#include "host/descriptor.h"

namespace morvik::test {
namespace {

// An element without any content ends the program on purpose when a search reaches it.
bool hasEmptyElement(const Descriptor& descriptor) {
  for (int i = 0; i < accessCount(descriptor); ++i) {
    if (descriptor.accesses->nodesetval->nodeTab[i]->children == nullptr) return true;
  }
  return false;
}

bool isListed(const Descriptor& descriptor, const std::string& name) {
  for (int i = 0; i < accessCount(descriptor); ++i) {
    if (accessName(descriptor, i) == name) return true;
  }
  return false;
}

// Letters can stand in a file in other ways than as themselves.
bool isPlain(std::string_view input) {
  return input.find_first_of("&%") == std::string_view::npos && input.starts_with("<descriptor") &&
         input.find('\0') == std::string_view::npos;
}

}  // namespace

void fuzz(std::string_view input) {
  const InputFile file(input);
  const auto descriptor = readDescriptor(file.path());
  if (!descriptor) return;
  require(input.size() <= kMaxDescriptor, "a large descriptor is none");
  require(!input.starts_with("\x1f\x8b"), "a compressed descriptor is none");
  if (hasEmptyElement(*descriptor)) return;
  for (const std::string& name : accessNames()) {
    const bool granted = hasAccess(*descriptor, name.c_str());
    require(granted == isListed(*descriptor, name), "what is listed is granted");
    if (granted && isPlain(input)) {
      require(input.find(name) != std::string_view::npos, "what is granted stands in the file");
    }
  }
}

}  // namespace morvik::test
