// The gateways to the user's accounts on social services, and the credentials that stay hidden
// behind them.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include <memory>
#include <span>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// The functions of `social.facebook` and `social.soundcloud`: they look the service's hidden token
/// up each time and send it to the service's own domain only.
std::span<const Binding> facebookFunctions();
std::span<const Binding> soundcloudFunctions();

/// One social.init that waits for its answer.
struct SocialCallbackContext {
  ScriptFunction callback;
  v8::Global<v8::Object> closure;   ///< what to hand to it, or empty
  v8::Global<v8::Context> context;  ///< the application's
};

/// What the table of awaited replies keeps for a social.init: empty once the answer has come.
struct PendingSocial {
  std::unique_ptr<SocialCallbackContext> record;
};

/// A reply function; `data` is a PendingSocial. Hangs on `social` what the descriptor grants and
/// the answer holds, then calls the script in any case. Hears one answer only.
void getSocialCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
