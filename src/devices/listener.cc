// The listener pattern, once for all features.
#include "devices/listener.h"

#include "host/morvik-data.h"

namespace morvik {

bool ScriptListener::onMessage(const zeph::ZephMsg& message) {
  return !hears(message) || tell(message);
}

void appendListener(v8::Isolate* isolate, std::unique_ptr<ZephMsgListener> listener) {
  currentInstance(isolate).addListener(std::move(listener));
}

}  // namespace morvik
