// The page as those meet it who cannot see it, or see it in another light or size.
#pragma once

#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "support/browser/browser.h"

namespace morvik::test {

struct Look {
  int width;
  bool isDark;

  /// The window that calls act on looks so from now on, and nothing in it is on its way.
  void show(Browser& browser) const {
    browser.show(width, 900, isDark, /*wantsLittleMotion=*/true);
  }
};

/// Narrow and wide, light and dark.
inline constexpr Look kLooks[] = {{360, false}, {360, true}, {1600, false}, {1600, true}};

void PrintTo(const Look& look, std::ostream* out);

/// What axe-core finds that is serious within an element; an empty list when there is nothing.
nlohmann::json seriousFindings(const WebDriver& driver, const std::string& selector = "html");

/// How many pixels of the page lie beside the window.
int pixelsBeside(const WebDriver& driver);

}  // namespace morvik::test
