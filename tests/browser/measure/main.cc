// Measures the page: page-latency [latency|weight|start|save|memory]..., all of them when none is
// named.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "measures.h"

namespace {

using namespace morvik::test;

struct Measure {
  const char* name;
  void (*take)();
};

constexpr Measure kMeasures[] = {{"latency", measureLatency},
                                 {"weight", measureWeight},
                                 {"start", measureStart},
                                 {"save", measureSave},
                                 {"memory", measureMemory}};

bool isWanted(const Measure& measure, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (name == measure.name) return true;
  }
  return names.empty();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> names(argv + 1, argv + argc);
  try {
    for (const Measure& measure : kMeasures) {
      if (isWanted(measure, names)) measure.take();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "page-latency: %s\n", error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
