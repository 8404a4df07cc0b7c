// The events that matter to it.
#include "server/shadow.h"

#include "device/commands.h"

namespace morvik::devkit {

Shadow::Shadow(Events& events) : device_(*this, agenda_), hears_(events, *this) {}

void Shadow::happened(const Event& event) {
  if (const auto* came = std::get_if<Came>(&event.what)) {
    device_.applicationCame(came->application);
  } else if (const auto* left = std::get_if<Left>(&event.what)) {
    device_.applicationLeft(left->application);
  } else if (const auto* received = std::get_if<Received>(&event.what)) {
    receive(device_, received->application, *received->message);
  }
}

}  // namespace morvik::devkit
