// The root of one application: its launch line and its listeners.
#include "host/morvik-data.h"

namespace morvik {
namespace {

struct Offer {
  const zeph::ZephMsg& message;
  MorvikData& instance;
};

// The address tells one listener from another in the log. The walk has taken the next element, so
// this one may go.
void callListener(gpointer element, gpointer data) {
  auto* listener = static_cast<ZephMsgListener*>(element);
  const Offer& offer = *static_cast<const Offer*>(data);
  g_debug("calling listener : [%p]", element);
  if (listener->onMessage(offer.message)) return;
  offer.instance.listeners = g_list_remove(offer.instance.listeners, element);
  delete listener;
}

}  // namespace

// Nothing is trimmed: two blanks in a row are an empty field, and a leading one an empty name,
// whose folder is the parent of all applications.
void MorvikData::setCmdLine(const char* line) {
  g_debug("setCmdLine %s", line);
  cmdline = line;
  const std::size_t first = cmdline.find(' ');
  if (first == std::string::npos) {
    appName = cmdline;
    return;
  }
  appName = cmdline.substr(0, first);
  g_debug("APP NAME %s", appName.c_str());

  const std::size_t second = cmdline.find(' ', first + 1);
  if (second == std::string::npos) {
    // The log has no line for a launch type that ends the launch line, and has one for any other.
    launchType = cmdline.substr(first + 1);
    return;
  }
  launchType = cmdline.substr(first + 1, second - first - 1);
  g_debug("LAUNCH_TYPE %s", launchType.c_str());
  instanceName = cmdline.substr(second + 1);
  g_debug("INSTANCE_NAME %s", instanceName.c_str());
}

// Last in the list: a listener hears a message after all that were there before it.
void MorvikData::addListener(std::unique_ptr<ZephMsgListener> listener) {
  ZephMsgListener* element = listener.release();
  g_debug("adding listener : [%p]", static_cast<void*>(element));
  listeners = g_list_append(listeners, element);
}

// The list's walk takes the next element before each call, so a listener may remove itself, and one
// that is added during the walk is heard from at the earliest behind the present one.
bool MorvikData::onMessage(const zeph::ZephMsg& message) {
  Offer offer{message, *this};
  g_list_foreach(listeners, callListener, &offer);
  return true;
}

void MorvikData::releaseListeners() {
  g_list_free_full(listeners,
                   [](gpointer element) { delete static_cast<ZephMsgListener*>(element); });
  listeners = nullptr;
}

}  // namespace morvik
