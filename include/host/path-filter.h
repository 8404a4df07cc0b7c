// Which file names a script may pass, and how names become paths.
#pragma once

#include <v8.h>

#include <cstddef>
#include <string>

namespace morvik {

class MorvikData;

/// Room for a path at an application's start, its end mark included: longer ones are cut.
inline constexpr std::size_t kStartPathSize = 255;

/// True when a script must not use this file name: it holds "descriptor.xml", two dots in a row, or
/// a byte other than a letter, a digit, "_", "-", "/" or a single dot.
bool isForbiddenPath(const char* path);

/// True when the name is forbidden. The log then has a warning, and the script the exception
/// "access denied: " with the name: its caller only returns.
[[nodiscard]] bool refusePath(v8::Isolate* isolate, const std::string& name);

/// `file` in the application's folder, cut without a word to what fits `size` with its end mark.
std::string appPath(const MorvikData& instance, const char* file, std::size_t size);

}  // namespace morvik
