// The faults in force, and which of them the next command or message meets.
#include "device/faults.h"

#include <algorithm>
#include <utility>

namespace morvik::devkit {

std::optional<zeph::VReturnCode> Faults::refusalOf(AppNumber from, int field) {
  const auto found = std::find_if(refusals_.begin(), refusals_.end(), [&](const Refusal& refusal) {
    return (refusal.field == 0 || refusal.field == field) && refusal.only.value_or(from) == from;
  });
  if (found == refusals_.end()) return std::nullopt;
  const zeph::VReturnCode code = found->code;
  if (found->left != Refusal::kAlways && --found->left == 0) refusals_.erase(found);
  return code;
}

std::chrono::milliseconds Faults::delayOf(int field) const {
  auto found = delays_.find(field);
  if (found == delays_.end()) found = delays_.find(0);
  return found != delays_.end() ? found->second : std::chrono::milliseconds(0);
}

Delivery Faults::deliveryTo(AppNumber application) {
  const auto found = deliveries_.find(application);
  if (found == deliveries_.end()) return {};
  const Delivery delivery = found->second;
  deliveries_.erase(found);
  return delivery;
}

}  // namespace morvik::devkit
