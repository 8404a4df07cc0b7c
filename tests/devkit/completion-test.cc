// Completion of morvik-dev, in a real bash.
#include <sstream>

#include "device/stimuli.h"
#include "loop.h"
#include "pty-program.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

constexpr char kScript[] = SOURCE_DIR "/devkit/completion/morvik-dev.bash";

// What bash would put in for the line, whose first word is made the path of the program.
std::vector<std::string> completionsOf(const std::string& rest) {
  const std::string line = std::string(MORVIK_DEV) + ' ' + rest;
  const ProgramResult outcome =
      run({"/usr/bin/env", "LINE=" + line, "bash", "--norc", "--noprofile", "-c",
           "source " + std::string(kScript) +
               "; COMP_LINE=$LINE; COMP_POINT=${#LINE}; _morvik_dev; "
               "if ((${#COMPREPLY[@]})); then printf '%s\\n' \"${COMPREPLY[@]}\"; fi"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  std::vector<std::string> lines;
  std::istringstream output(outcome.output);
  for (std::string one; std::getline(output, one);) lines.push_back(one);
  return lines;
}

TEST(Completion, knowsVerbs) {
  EXPECT_THAT(completionsOf(""), IsSupersetOf({"run", "device", "sim", "config", "help"}));
  EXPECT_THAT(completionsOf(""), Not(Contains("complete"))) << "it is for shells alone";
  EXPECT_THAT(completionsOf("dev"), ElementsAre("device"));
  EXPECT_THAT(completionsOf("help dev"), ElementsAre("device"));
  EXPECT_THAT(completionsOf("fly"), IsEmpty());
}

TEST(Completion, knowsOptionsAndTheirValues) {
  EXPECT_THAT(completionsOf("device --"),
              IsSupersetOf({"--port=", "--state=", "--replay=", "--record=", "--help"}));
  EXPECT_THAT(completionsOf("check --j"), ElementsAre("--json"));
  EXPECT_THAT(completionsOf("device --events="), ElementsAre("text", "json"));
  EXPECT_THAT(completionsOf("run --level=w"), ElementsAre("warning"));
  EXPECT_THAT(completionsOf("new --template=hel"), Contains("hello"));
  EXPECT_THAT(completionsOf("run my"), IsEmpty()) << "files come from bash";
}

TEST(Completion, knowsStimuli) {
  std::vector<std::string> names{"app", "restart", "launch", "end"};
  for (const Stimulus* stimulus : stimuli()) names.emplace_back(stimulus->name);
  EXPECT_THAT(completionsOf("sim "), testing::UnorderedElementsAreArray(names));
  EXPECT_THAT(completionsOf("sim butt"), ElementsAre("button"));
  EXPECT_THAT(completionsOf("sim button S"), ElementsAre("SIMPLE"));
  EXPECT_THAT(completionsOf("sim app 2 ear "), ElementsAre("LEFT", "RIGHT"));
  EXPECT_THAT(completionsOf("sim rfid a1 t"), ElementsAre("type="));
  EXPECT_THAT(completionsOf("sim button SIMPLE --wait le"), ElementsAre("led=", "left="));
  EXPECT_THAT(completionsOf("sim --wait=le"), ElementsAre("led=", "left="));
}

TEST(Completion, knowsWhatConfigTakes) {
  EXPECT_THAT(completionsOf("config "), ElementsAre("build", "show", "set"));
  EXPECT_THAT(completionsOf("config set my-app aut"), ElementsAre("author="));
  EXPECT_THAT(completionsOf("config build my"), IsEmpty());
}

TEST(Completion, completesAtTheTabKey) {
  Loop loop;
  PtyProgram bash(loop, {"/usr/bin/env", "TERM=dumb", "INPUTRC=/dev/null", "bash", "--norc",
                         "--noprofile", "-i"});
  bash.press("source " + std::string(kScript) + "; PATH=" + PROGRAMS + ":$PATH; echo re''ady\r");
  bash.waitFor("ready\r\n");
  bash.press("morvik-dev conf\tb\t\r");
  bash.waitFor("morvik-dev config: build takes a file");
  bash.press("exit\r");
  bash.waitForEnd();
}

}  // namespace
}  // namespace morvik::test
