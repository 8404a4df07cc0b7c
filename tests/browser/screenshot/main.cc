// Takes a picture of the page while a sample is at work on it: screenshot FILE.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "support/browser/browser.h"
#include "support/browser/said.h"
#include "support/temporary-folder.h"

namespace {

using morvik::test::Browser;
using morvik::test::Child;
using morvik::test::TemporaryFolder;
using morvik::test::WebDriver;

constexpr int kWidth = 1280;
constexpr int kHeight = 900;

// The LED and the messages show that the application has come that far.
void takePicture(const std::string& page, const std::string& file) {
  Browser& browser = Browser::shared();
  WebDriver& driver = browser.driver();
  browser.show(kWidth, kHeight, /*isDark=*/false);
  driver.open(page);
  driver.waitFor("document.getElementById('led').hasAttribute('data-lit')");
  driver.click("#tab-messages");
  driver.waitFor("document.getElementById('panel-messages').textContent.includes('led')");
  std::ofstream(file, std::ios::binary) << driver.screenshot();
}

void run(const std::string& file) {
  const TemporaryFolder state;
  const Child device(
      {MORVIK_DEV, "device", "--port=0", "--page", "--state=" + state.path().string()});
  const std::string address = morvik::test::saidBehind("listening on ", device);
  const std::string page = morvik::test::saidBehind("page: ", device);
  const Child host({MORVIKVM, "--app_folder=" SOURCE_DIR "/apps"});
  host.say("hello demo " + address + "\n");
  takePicture(page, file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: screenshot FILE\n", stderr);
    return 2;
  }
  try {
    run(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "screenshot: %s\n", error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
