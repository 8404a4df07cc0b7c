// The files of an application's own folder, for its scripts.
#pragma once

#include <v8.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "host/owned.h"
#include "host/script.h"

namespace morvik {

/// Room for a resource's path, its end mark included: longer ones are cut. That it is not
/// kStartPathSize is meant: a script reads and writes where it could not include.
inline constexpr std::size_t kResourcePathSize = 512;

/// A file's content.
struct ResourceBuffer {
  MallocBytes data;       ///< the file, and one zero byte behind it
  std::int32_t size = 0;  ///< of the file, without that zero byte
};

/// The script function `include`: runs a source file in the application's one context.
void include(const Args& args);

/// The functions of `file`.
std::span<const Binding> fileFunctions();

/// A data object (see data-object.h) with the property `text`. The file need not exist. A context
/// must be entered.
v8::Local<v8::Object> getDataResource(const std::string& path);

/// The getter of `text`: reads the file anew each time, up to its first zero byte. Throws "cannot
/// open resource: " with the path.
void textGetter(v8::Local<v8::Name> name, const v8::PropertyCallbackInfo<v8::Value>& info);

/// Reads a file. Null when it cannot be read; the log then has the system's text as a warning.
std::unique_ptr<ResourceBuffer> loadResource(const std::string& path);

}  // namespace morvik
