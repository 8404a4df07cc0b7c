// axe-core in the page.
#include "looks.h"

#include "support/file-content.h"

namespace morvik::test {

using nlohmann::json;

void PrintTo(const Look& look, std::ostream* out) {
  *out << look.width << (look.isDark ? " dark" : " light");
}

json seriousFindings(const WebDriver& driver, const std::string& selector) {
  if (driver.run("return !window.axe") == true) {
    driver.run(contentOf(SOURCE_DIR "/tests/browser/axe.min.js"));
  }
  return driver.runAsync("const { violations } = await axe.run(" + json(selector).dump() +
                         ", { resultTypes: ['violations'], preload: false });"
                         "return violations"
                         "  .filter(({ impact }) => impact === 'serious' || impact === 'critical')"
                         "  .map(({ id, impact, help, nodes }) =>"
                         "    ({ id, impact, help, nodes: nodes.map(({ html, failureSummary }) =>"
                         "        [html.slice(0, 200), failureSummary]) }));");
}

int pixelsBeside(const WebDriver& driver) {
  return driver.run(
      "const { scrollWidth } = document.documentElement;"
      "return Math.max(0, scrollWidth - innerWidth);");
}

}  // namespace morvik::test
