// Everything that can be done to the device is done from the page, by its forms.
#include <set>

#include <nlohmann/json.hpp>

#include "device-page-fixture.h"
#include "every-stimulus.h"
#include "everything-form.h"

namespace morvik::test {
namespace {

using nlohmann::json;

using PageForEverything = DevicePageTest;

// An ear in a hand moves many times a second: the picture alone tells that.
constexpr const char* kEarIsThere =
    "document.getElementById('ear-left').getAttribute('aria-valuenow') === '3' && 'yes'";

TEST_F(PageForEverything, everyStimulusHasAFormThatDoesIt) {
  openPage();
  const auto first = application();
  const auto second = application();
  expect("document.querySelectorAll('#for-app option').length === 3");
  std::set<std::string> done;
  for (const StimulusRow& row : everyStimulus()) {
    const json stimulus = json::parse(row.json);
    if (stimulus["stimulus"] == "help") continue;  // a page needs none
    if (*row.before != '\0') {
      second->send(startRequest("granted"));  // what went on before may have taken it away
      command(*second, row.before);
    }
    fillAndSend(driver_, stimulus);
    SCOPED_TRACE(row.json);
    const bool isEar = stimulus["stimulus"] == "ear";
    EXPECT_EQ(driver_.waitFor(isEar ? kEarIsThere : kOutcome), "yes") << driver_.text("#outcome");
    done.insert(stimulus["stimulus"]);
  }
  const auto known = driver_.run("return document.querySelectorAll('#everything option').length");
  EXPECT_EQ(done.size(), known.get<std::size_t>());
}

}  // namespace
}  // namespace morvik::test
