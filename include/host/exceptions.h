// Exceptions that nobody catches: each of them is reported in the log, once.
#pragma once

#include <v8.h>

namespace morvik {

/// Writes an exception to the log: place and text, the source line, an underline, the stack. An
/// exception without a message ends the process through a fatal log.
void reportException(const v8::TryCatch& tryCatch);

/// For the engine: what it has to say about exceptions that passed no reportException.
void onEngineMessage(v8::Local<v8::Message> message, v8::Local<v8::Value> exception);
/// For the engine: keeps account of promises that are rejected without a handler.
void onPromiseReject(v8::PromiseRejectMessage rejection);

/// Reports the promises that were rejected and have found no handler since.
void reportRejections(v8::Isolate* isolate);

/// While it lives, the engine runs script that nobody has called, such as finalisers, and what that
/// throws is reported by onEngineMessage.
class EngineRunsScript {
 public:
  EngineRunsScript();
  ~EngineRunsScript();
  EngineRunsScript(const EngineRunsScript&) = delete;
  EngineRunsScript& operator=(const EngineRunsScript&) = delete;
};

}  // namespace morvik
