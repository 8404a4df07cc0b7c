// Trouble kept, and messages sent.
#include "device/stimulation.h"

#include "device/text.h"

namespace morvik::devkit {

Stimulation::Stimulation(Device& device, const Stimulus& stimulus, std::optional<AppNumber> only)
    : device_(device), stimulus_(stimulus), only_(only), arguments_(stimulus.arguments) {}

void Stimulation::refuse(const std::string& trouble) {
  if (trouble_.empty()) trouble_ = arguments_.trouble().empty() ? trouble : arguments_.trouble();
}

bool Stimulation::understood() {
  if (!arguments_.trouble().empty()) refuse(arguments_.trouble());
  if (only_ && stimulus_.whom == Stimulus::For::kDevice) {
    refuse("this happens to the device, not to one application: leave \"" + appName(*only_) +
           "\" out");
  }
  if (!arguments_.left().empty()) refuse("what is " + cited(arguments_.left().front()) + "?");
  if (!trouble_.empty()) return false;
  if (stimulus_.group != Stimulus::Group::kHelp) {
    device_.events().raise(Stimulated{stimulus_.name, only_, arguments_.shown()});
  }
  return true;
}

std::vector<AppNumber> Stimulation::targets() const {
  std::vector<AppNumber> numbers;
  for (const auto& [number, application] : device_.applications()) {
    if (isFor(number)) numbers.push_back(number);
  }
  return numbers;
}

void Stimulation::send(const zeph::ZephMsg& message) {
  const std::vector<AppNumber> numbers = targets();
  device_.sendTo(numbers, message);
  if (numbers.empty()) tellNobodyHears();
}

}  // namespace morvik::devkit
