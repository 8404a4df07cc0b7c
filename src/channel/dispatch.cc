// The two roads of a received message: the awaited reply, then the listeners.
#include "channel/dispatch.h"

#include <glib.h>
#include <zeph-message.pb.h>

#include "channel/callback-table.h"
#include "channel/interactive-mode.h"
#include "host/morvik-data.h"

namespace morvik {
namespace {

// A lost correlation is nothing unusual: every answer to a command that came without a function is
// one, and the server cannot know. The message goes on to the listeners all the same.
void dispatchReply(const zeph::ZephMsg& message) {
  if (!message.has_correlationid()) return;
  if (const auto entry = findCallback(message)) {
    callCallback(entry, message);
  } else {
    g_warning("NO CORRELATION FOUND");
  }
}

}  // namespace

// A message about interactive mode reaches no listener, whatever else it carries; one that starts
// the mode does nothing here, because the grant comes as the answer to the application's own
// request.
void dispatch(MorvikData& instance, const zeph::ZephMsg& message) {
  dispatchReply(message);
  if (!message.has_interactivemode()) {
    instance.onMessage(message);
  } else if (message.interactivemode().action() == zeph::InteractiveMode::STOP) {
    interactiveModeStopped();
  }
}

}  // namespace morvik
