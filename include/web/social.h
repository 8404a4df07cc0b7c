// The user's accounts on social services: what the server's answer to social.init makes of them.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// One social.init that waits for its answer.
struct SocialCallbackContext {
  ScriptFunction callback;
  v8::Global<v8::Object> closure;   ///< what to hand to it, or empty
  v8::Global<v8::Context> context;  ///< the application's
};

/// A reply function; `data` is an AnsweredOnce<SocialCallbackContext>. Hangs on `social` what the
/// descriptor grants and the answer holds, then calls the script in any case. Hears one answer
/// only.
void getSocialCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
