// Which file names a script may pass.
#pragma once

#include <v8.h>

#include <string>

namespace morvik {

/// True when a script must not use this file name: it holds "descriptor.xml", two dots in a row, or
/// a byte other than a letter, a digit, "_", "-", "/" or a single dot.
bool isForbiddenPath(const char* path);

/// True when the name is forbidden. The log then has a warning, and the script the exception
/// "access denied: " with the name.
[[nodiscard]] bool refusePath(v8::Isolate* isolate, const std::string& name);

}  // namespace morvik
