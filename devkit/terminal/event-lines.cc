// Events as lines.
#include "terminal/event-lines.h"

#include "device/event-json.h"

namespace morvik::devkit {

void EventLines::happened(const Event& event) { sink_(lineOf(event)); }

}  // namespace morvik::devkit
