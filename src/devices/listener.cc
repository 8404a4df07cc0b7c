// The listener pattern, once for all features.
#include "devices/listener.h"

#include "host/morvik-data.h"

namespace morvik {

void appendListener(v8::Isolate* isolate, std::unique_ptr<ZephMsgListener> listener) {
  currentInstance(isolate).addListener(std::move(listener));
}

}  // namespace morvik
