// The page as those meet it who cannot see it, or see it in another light or size.
#include <nlohmann/json.hpp>

#include "device-page-fixture.h"
#include "support/file-content.h"

namespace morvik::test {
namespace {

using nlohmann::json;

struct Look {
  int width;
  bool isDark;
};

void PrintTo(const Look& look, std::ostream* out) {
  *out << look.width << (look.isDark ? " dark" : " light");
}

class PageForEveryone : public DevicePageTest, public ::testing::WithParamInterface<Look> {
 protected:
  PageForEveryone() { browser_.show(GetParam().width, 900, GetParam().isDark); }

  // What axe-core finds that is serious.
  json findings() {
    driver_.run(test::contentOf(SOURCE_DIR "/tests/browser/axe.min.js"));
    const json all = driver_.runAsync(
        "const { violations } = await axe.run(document, { resultTypes: ['violations'] });"
        "return violations.map(({ id, impact, help, nodes }) =>"
        "  ({ id, impact, help, nodes: nodes.map((node) => node.html.slice(0, 200)) }));");
    json serious = json::array();
    for (const json& one : all) {
      if (one["impact"] == "serious" || one["impact"] == "critical") serious.push_back(one);
    }
    return serious;
  }
};

TEST_P(PageForEveryone, hasNothingSerious) {
  const auto app = application();
  openPage();
  EXPECT_EQ(app->ask(lightRequest("granted", "blue")).response().code(), zeph::OK);
  expect("document.querySelectorAll('#applications li').length > 0");
  const auto tabs = driver_.run("return document.querySelectorAll('[role=tab]').length").get<int>();
  ASSERT_GT(tabs, 5);
  for (int i = 0; i < tabs; ++i) {
    driver_.run("document.querySelectorAll('[role=tab]')[" + std::to_string(i) + "].click()");
    EXPECT_EQ(findings(), json::array()) << "tab " << i;
  }
}

TEST_P(PageForEveryone, wouldBeFoundOut) {
  openPage();
  driver_.run("document.querySelector('main').append(document.createElement('button'))");
  const json found = findings();
  ASSERT_EQ(found.size(), 1U) << found.dump(2);
  EXPECT_EQ(found[0]["id"], "button-name");
}

TEST_P(PageForEveryone, fitsItsWidth) {
  openPage();
  const json root = driver_.run(
      "const { scrollWidth, clientWidth } = document.documentElement;"
      "return { scrollWidth, clientWidth, innerWidth };");
  EXPECT_EQ(root["innerWidth"], GetParam().width);
  EXPECT_LE(root["scrollWidth"], root["clientWidth"]);
}

INSTANTIATE_TEST_SUITE_P(Looks, PageForEveryone,
                         ::testing::Values(Look{360, false}, Look{360, true}, Look{1600, false},
                                           Look{1600, true}));

}  // namespace
}  // namespace morvik::test
