// The reply function of morvik.info.
#pragma once

#include <zeph-message.pb.h>

#include <optional>

#include "channel/zeph-msg-listener.h"
#include "host/script.h"

namespace morvik {

/// A morvik.info that waits for its answer: empty once it has come.
struct PendingInfo {
  std::optional<ScriptFunction> function;
};

/// A reply function; `data` is a PendingInfo. Hands the script one object of texts, once. A message
/// without device information leaves the query open.
void InfoMorvikCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
