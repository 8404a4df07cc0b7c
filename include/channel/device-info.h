// The reply function of morvik.info.
#pragma once

#include <zeph-message.pb.h>

#include "host/zeph-msg-listener.h"

namespace morvik {

/// A reply function; `data` is an AnsweredOnce<ScriptFunction>. Hands the script one object of
/// texts, once. A message without device information leaves the query open.
void InfoMorvikCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
