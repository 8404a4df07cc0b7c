// Script objects that stand for a file: two internal fields, of which field 1 holds the path. A
// script cannot read them and only hands them on.
#pragma once

#include <v8.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/owned.h"

namespace morvik {

inline constexpr int kDataFields = 2;
inline constexpr int kBufferField =
    0;  ///< an External with a null pointer, read by nobody: two fields tell a data object
inline constexpr int kPathField = 1;  ///< a String; whoever reads it asks dataPath

/// A file's content.
struct ResourceBuffer {
  MallocBytes data;       ///< the file, and one zero byte behind it
  std::int32_t size = 0;  ///< of the file, without that zero byte
};

/// A data object without anything that a script can see; its field 0 is undefined.
v8::Local<v8::Object> newDataObject(v8::Local<v8::Context> context, const std::string& path);

/// The path that a data object stands for, or nothing for every other value.
std::optional<v8::Local<v8::String>> dataPath(v8::Local<v8::Value> value);

/// A data object with the property `text`. The file need not exist. A context
/// must be entered.
v8::Local<v8::Object> getDataResource(const std::string& path);

/// The getter of `text`: reads the file anew each time, up to its first zero byte. Throws "cannot
/// open resource: " with the path.
void textGetter(v8::Local<v8::Name> name, const v8::PropertyCallbackInfo<v8::Value>& info);

/// Reads a file. Null when it cannot be read; the log then has the system's text as a warning.
std::unique_ptr<ResourceBuffer> loadResource(const std::string& path);

}  // namespace morvik
