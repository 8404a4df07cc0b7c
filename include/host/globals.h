// The general-purpose functions and values of an application's global object.
#pragma once

#include <glib.h>
#include <v8.h>

namespace morvik {

class MorvikData;

/// The template of the global object: its first functions, and the internal field that holds the
/// MorvikData.
v8::Local<v8::ObjectTemplate> buildGlobalTemplate();

/// The functions of `morvik` that every application has.
void addMorvikFunctions(v8::Local<v8::ObjectTemplate> morvik);

/// What else stands on the global object, `morvik` and the launch line among it.
void addGlobals(v8::Local<v8::ObjectTemplate> global, v8::Local<v8::ObjectTemplate> morvik,
                const MorvikData& instance);

/// Releases what the functions bound here keep of the script: its listeners, and the functions that
/// wait for answers. At the end of an application, while the engine still stands.
void releaseGlobals(MorvikData& instance);

/// A script's timer; `holder` is the kept function, released by GLib when the timer ends. Stays
/// while the function returns exactly true.
gboolean timerFired(gpointer holder);

}  // namespace morvik
