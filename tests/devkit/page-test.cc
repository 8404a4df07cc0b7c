// docs/virtual-device.md tells what the programs tell.

#include <csignal>
#include <filesystem>

#include "bench.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

std::string page() { return test::contentOf(SOURCE_DIR "/docs/virtual-device.md"); }

TEST(VirtualDevicePage, hasTheHelpOfTheCommandInput) {
  Bench bench;
  EXPECT_THAT(page(), HasSubstr("```\n" + stimulate(bench.device, "help").text + "```\n"));
}

TEST(VirtualDevicePage, tellsWhereTheNamesOfCommandsStand) {
  EXPECT_THAT(page(), HasSubstr("[proto/zeph-message.proto](../proto/zeph-message.proto)"));
  EXPECT_TRUE(std::filesystem::exists(SOURCE_DIR "/proto/zeph-message.proto"));
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what << " in " << text;
  return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

// The command line of the page that launches an application, for the sample `hello` on a device at
// this address.
std::string launchCommand(const std::string& address) {
  const std::string whole = page();
  const std::string prompt = "\n$ ";
  const std::size_t found = whole.find(prompt + "{ echo ");
  EXPECT_NE(found, std::string::npos);
  if (found == std::string::npos) return "";
  const std::size_t start = found + prompt.size();
  std::string command = whole.substr(start, whole.find('\n', start) - start);
  command = replaced(command, "first", "hello");
  command = replaced(command, "127.0.0.1:7410", address);
  command = replaced(command, "build/", PROGRAMS "/");
  return replaced(command, "--app_folder=apps", "--app_folder=" SOURCE_DIR "/apps");
}

TEST(VirtualDevicePage, tellsHowToTypeWhileAnApplicationRuns) {
  EXPECT_THAT(page(), HasSubstr("\n$ build/morvik-dev device\n"));
  EXPECT_THAT(run({MORVIK_DEV, "device", "--help"}).output, HasSubstr("(7410)"));
  const test::TemporaryFolder state;
  Program device({MORVIK_DEV, "device", "--port=0", "--state=" + state.path().string()});
  const std::string said = device.waitFor("\n");
  const std::string address = replaced(said.substr(0, said.find('\n')), "listening on ", "");
  Program launcher({"/bin/bash", "-c", launchCommand(address)});
  launcher.waitFor("JSLOG: LED on, red: OK");
  device.say("button SIMPLE\n");
  device.waitFor("app 1 <-  buttonCallback { type: SIMPLE }");
  launcher.say("hello demo " + address + "\n");
  device.waitFor("app 2 --  connected");
  launcher.say("\n");
  launcher.waitFor("vide -> break");
  launcher.endInput();
  device.signal(SIGTERM);
  EXPECT_EQ(launcher.waitForEnd(), 0);
}

TEST(VirtualDevicePage, hasEveryOption) {
  for (const std::string verb : {"device", "log"}) {
    const std::string help = run({MORVIK_DEV, verb, "--help"}).output;
    std::size_t options = 0;
    for (std::size_t at = help.find(" --"); at != std::string::npos;
         at = help.find(" --", at + 1)) {
      if (help.at(at + 3) == ',') continue;  // a word of a sentence
      const std::string option = help.substr(at, help.find_first_of("= \n", at + 3) - at);
      if (option == " --help") continue;
      EXPECT_THAT(page(), HasSubstr("| `" + verb + option)) << help;
      ++options;
    }
    EXPECT_GT(options, 0U) << help;
  }
}

}  // namespace
}  // namespace morvik::test
