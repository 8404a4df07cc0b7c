// The message pump: an idle source that reads the socket and dispatches.
#include "channel/pump.h"

#include <v8.h>
#include <zeph-message.pb.h>

#include "channel/connection.h"
#include "channel/dispatch.h"
#include "channel/message.h"
#include "host/morvik-data.h"
#include "host/script.h"
#include "host/system-log.h"

namespace morvik {
namespace {

// What is made for scripts on the way of a message goes when it has been dispatched.
void dispatchInScope(MorvikData& instance, const zeph::ZephMsg& message) {
  const v8::HandleScope handles(v8::Isolate::GetCurrent());
  dispatch(instance, message);
}

// The loop never sleeps here with a pump in it, and so looks at nothing but its own wake-up, for
// which there is no other thread.
gint passBy(GPollFD* descriptors, guint count, gint timeout) {
  return count == 1 && timeout == 0 ? 0 : g_poll(descriptors, count, timeout);
}

void spareLooks() {
  if (g_main_context_get_poll_func(nullptr) == g_poll)
    g_main_context_set_poll_func(nullptr, passBy);
}

}  // namespace

// The source belongs to the main loop and nobody keeps its id: a connection ends with the process.
int connectServer(const char* host, std::int32_t port, MorvikData* listener) {
  const int socket = openConnection(host, port);
  if (socket == -1) return -1;
  listener->socket = socket;
  g_idle_add(onSocketIdle, listener);
  spareLooks();
  return 0;
}

gboolean onSocketIdle(gpointer listener) {
  auto& instance = *static_cast<MorvikData*>(listener);
  const HeldRecords held;
  makeIdAhead();
  zeph::ZephMsg message;
  const int result = receiveZephMsg(instance.socket, message);
  if (result == -1) return G_SOURCE_REMOVE;
  if (result == 0) {
    dispatchInScope(instance, message);
  } else {
    TemporaryContext::makeSpare();
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace morvik
