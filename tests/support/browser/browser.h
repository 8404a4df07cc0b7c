// The one browser of a test program: a real Chromium without a screen.
#pragma once

#include <memory>
#include <string>

#include "support/browser/web-driver.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

class Browser {
 public:
  /// Started when it is asked for first. It ends with the program.
  static Browser& shared();

  /// Starts the driver on a free port, and the browser with an empty folder for its user.
  Browser();

  WebDriver& driver() { return *driver_; }

  /// From now on pages see a screen of this width, and a user with these wishes.
  void show(int width, int height, bool isDark, bool wantsLittleMotion = false);

 private:
  TemporaryFolder user_;
  Program program_;
  std::unique_ptr<WebDriver> driver_;
};

}  // namespace morvik::test
