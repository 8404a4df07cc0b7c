// From a save to the first line of the script that was saved.
#include <chrono>

#include "measures.h"
#include "numbers.h"
#include "support/browser/running-folders.h"
#include "support/temporary-folder.h"

namespace morvik::test {
namespace {

constexpr int kSaves = 50;

double now() {
  const std::chrono::duration<double, std::milli> sinceEpoch =
      std::chrono::system_clock::now().time_since_epoch();
  return sinceEpoch.count();
}

// The script tells itself when its first line is run.
std::string scriptOf(int save) {
  return "log('here at ' + Date.now() + ' : that was " + std::to_string(save) + ".');\n" +
         interactiveScript("");
}

double timeOfFirstLine(const Program& program, int save) {
  const std::string end = " : that was " + std::to_string(save) + '.';
  const std::string said = program.waitFor(end);
  const std::size_t behind = said.find(end);
  return std::stod(said.substr(said.rfind(' ', behind - 1) + 1));
}

}  // namespace

void measureSave() {
  const TemporaryFolder folder;
  writeApplication(folder / "app", scriptOf(0), "");
  RunningFolders run(folder.path(), MORVIK_DEV, {folder / "app"});
  timeOfFirstLine(run.program(), 0);
  std::vector<double> taken;
  for (int save = 1; save <= kSaves; ++save) {
    const double begin = now();
    writeApplication(folder / "app", scriptOf(save), "");
    taken.push_back(timeOfFirstLine(run.program(), save) - begin);
  }
  printTimes("from a save to the restarted script's first line", taken);
}

}  // namespace morvik::test
