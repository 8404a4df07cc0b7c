// Fields by the names of arguments.
#include "everything-form.h"

namespace morvik::test {
namespace {

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

}  // namespace

void fillAndSend(const WebDriver& driver, const nlohmann::json& stimulus) {
  driver.run(kFillAndSend, nlohmann::json::array({stimulus}));
}

}  // namespace morvik::test
