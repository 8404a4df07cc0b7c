// The user's message box, which the server keeps.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include <optional>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// What a query of the message box keeps until its messages come.
struct MessageCallbackContext {
  explicit MessageCallbackContext(v8::Local<v8::Value> scriptValue) {
    if (scriptValue->IsFunction()) callback.emplace(scriptValue.As<v8::Function>());
  }
  std::optional<ScriptFunction> callback;  ///< nothing if the script gave something else
};

/// A reply function; `data` is an AnsweredOnce<MessageCallbackContext>. Hands the script an array
/// of messages, once. An answer without a list, such as a bare response, does not reach the script
/// and leaves the query open.
void MessageCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
