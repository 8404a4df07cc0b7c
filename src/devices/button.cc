// morvik.button: addListener. Hears in which way the button was pressed.
#include "channel/message.h"
#include "devices/devices.h"
#include "devices/listener.h"

namespace morvik {
namespace {

class ButtonMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

 private:
  [[nodiscard]] bool hears(const zeph::ZephMsg& message) const override {
    return message.has_buttoncallback();
  }
  // A message without a type counts as the first one, which is how an absent enum reads.
  bool tell(const zeph::ZephMsg& message) override {
    return function.call({toScript(nameOf(message.buttoncallback().type()))});
  }
};

constexpr Binding kFunctions[] = {{"addListener", addListener<ButtonMsgCallback>}};

}  // namespace

std::span<const Binding> buttonFunctions() { return kFunctions; }

}  // namespace morvik
