// Everything that can be done to the device is done from the page, by its forms.
#include <set>

#include <nlohmann/json.hpp>

#include "device-page-fixture.h"
#include "every-stimulus.h"

namespace morvik::test {
namespace {

using nlohmann::json;

// Fills the form of a stimulus as a hand does, and sends it.
constexpr const char* kFillAndSend = R"js(
  const [row] = arguments;
  const same = (one, other) => one.toLowerCase() === String(other).toLowerCase();
  const fill = (field, value) => {
    const values = [value].flat();
    if (field instanceof HTMLSelectElement) {
      for (const option of field.options) option.selected = values.some((one) => same(option.value, one));
    } else {
      field.value = values.join('\n');
      // Where a word may stand in a number's place, a form knows it in capitals.
      if (!field.validity.valid) field.value = field.value.toUpperCase();
    }
  };
  const chosen = document.getElementById('everything');
  fill(chosen, row.stimulus);
  chosen.dispatchEvent(new Event('change'));
  fill(document.getElementById('for-app'), row.app ?? '');
  const { elements } = document.querySelector('#everything-form form');
  for (const [name, value] of Object.entries(row.arguments ?? {})) {
    const members = value && typeof value === 'object' && !Array.isArray(value) ? value : null;
    if (!members) fill(elements.namedItem(name), value);
    for (const [member, text] of Object.entries(members ?? {})) fill(elements.namedItem(`${name}\n${member}`), text);
  }
  delete document.getElementById('outcome').dataset.done;
  document.querySelector('#everything-form form').requestSubmit();
)js";

using PageForEverything = DevicePageTest;

constexpr const char* kOutcome = "document.getElementById('outcome').dataset.done";
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
    driver_.run(kFillAndSend, json::array({stimulus}));
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
