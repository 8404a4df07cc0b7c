// docs/virtual-device.md tells what the programs tell.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "bench.h"
#include "program.h"

namespace morvik::devkit::testing {
namespace {

using ::testing::HasSubstr;

std::string page() {
  std::ifstream stream(SOURCE_DIR "/docs/virtual-device.md");
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(VirtualDevicePage, hasTheHelpOfTheCommandInput) {
  Bench bench;
  EXPECT_THAT(page(), HasSubstr("```\n" + stimulate(bench.device, "help").text + "```\n"));
}

TEST(VirtualDevicePage, hasEveryOption) {
  for (const std::string verb : {"device", "log"}) {
    const std::string help = run({MORVIK_DEV, verb, "--help"}).output;
    std::size_t options = 0;
    for (std::size_t at = help.find(" --"); at != std::string::npos;
         at = help.find(" --", at + 1)) {
      const std::string option = help.substr(at, help.find_first_of("= \n", at + 3) - at);
      if (option == " --help") continue;
      EXPECT_THAT(page(), HasSubstr("| `" + verb + option)) << help;
      ++options;
    }
    EXPECT_GT(options, 0U) << help;
  }
}

}  // namespace
}  // namespace morvik::devkit::testing
