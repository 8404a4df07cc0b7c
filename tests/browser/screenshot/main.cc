// Takes a picture of the page while samples are at work on it: screenshot FILE.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "support/browser/browser.h"
#include "support/browser/running-folders.h"
#include "support/temporary-folder.h"

namespace {

using morvik::test::Browser;
using morvik::test::RunningFolders;
using morvik::test::TemporaryFolder;
using morvik::test::WebDriver;

constexpr int kWidth = 1280;
constexpr int kHeight = 900;

// Nothing is on its way; what moves for ever may.
constexpr const char* kIsStill =
    "document.getAnimations().every(({ playState, effect }) => "
    "playState === 'finished' || effect.getComputedTiming().iterations === Infinity)";

// One sample has lit the LED and changes it for ever, the other one listens.
void takePicture(const std::string& file) {
  Browser& browser = Browser::shared();
  const TemporaryFolder own;
  const RunningFolders run(own.path(), MORVIK_DEV,
                           {SOURCE_DIR "/apps/hello", SOURCE_DIR "/apps/voice-menu"});
  WebDriver& driver = browser.driver();
  browser.show(kWidth, kHeight, /*isDark=*/false);
  driver.open(run.page());
  driver.waitFor("document.querySelector('#device[data-listens]')");
  driver.waitFor("document.getElementById('log').textContent.includes('the LED is green now')");
  driver.waitFor(kIsStill);
  std::ofstream(file, std::ios::binary) << driver.screenshot();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: screenshot FILE\n", stderr);
    return 2;
  }
  try {
    takePicture(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "screenshot: %s\n", error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
