// The context that an application's script runs in, apart from the descriptor's say in it.
#pragma once

#include <v8.h>

namespace morvik {

/// A context with the engine's own objects, the internal field for the MorvikData, and nothing of
/// the host's yet. Costs more than all that comes after, so the launcher makes one ahead.
v8::Local<v8::Context> newBareContext();

/// The application's context: the one that the launcher has made ahead, once, or else a new one.
/// Its global object has all that `globals` describes, in that order, as if it were made from it.
v8::Local<v8::Context> newAppContext(v8::Local<v8::ObjectTemplate> globals);

}  // namespace morvik
