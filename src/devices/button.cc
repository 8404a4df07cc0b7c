// morvik.button: addListener. Hears in which way the button was pressed.
#include "channel/message.h"
#include "devices/devices.h"
#include "devices/listener.h"

namespace morvik {
namespace {

class ButtonMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  // A message without a type counts as the first one, which is how an absent enum reads.
  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_buttoncallback()) return true;
    return function.call({toScript(nameOf(message.buttoncallback().type()))});
  }
};

constexpr Binding kFunctions[] = {{"addListener", addListener<ButtonMsgCallback>}};

}  // namespace

std::span<const Binding> buttonFunctions() { return kFunctions; }

}  // namespace morvik
