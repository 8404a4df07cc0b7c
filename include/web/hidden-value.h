// Secrets kept on script objects: by a name of the host's own, out of reach of every script.
#pragma once

#include <v8.h>

#include <string_view>

namespace morvik {

/// Keeps `value` on the object under `name`, in place of an earlier one. No script can list, read,
/// copy out or overwrite it, and setting it runs no script, whatever the object is (a Proxy, a
/// frozen object, one with setters). A native clone (v8::Object::Clone) carries hidden values
/// along; objects that inherit from this one do not have them.
void setHidden(v8::Local<v8::Object> object, std::string_view name, v8::Local<v8::Value> value);

/// The value kept on the object itself under `name`; undefined when there is none. Runs no script.
v8::Local<v8::Value> hidden(v8::Local<v8::Object> object, std::string_view name);

}  // namespace morvik
