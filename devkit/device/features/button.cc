// The button.
#include "device/handlers.h"

namespace morvik::devkit {

void pressButton(Stimulation& stimulation) {
  const auto type = stimulation.choice<zeph::ButtonCallback::Type>("the kind of press");
  if (!stimulation.understood()) return;
  zeph::ZephMsg message;
  message.mutable_buttoncallback()->set_type(type);
  stimulation.send(message);
}

}  // namespace morvik::devkit
