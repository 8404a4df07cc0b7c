// Source text of an application's scripts.
#pragma once

#include <v8.h>

#include <string>

namespace morvik {

class MorvikData;

/// The text of a source file in the application's folder, up to its first zero byte. A file that is
/// missing or cannot be read ends the process through a fatal log with the system's text.
v8::Local<v8::String> loadSource(const MorvikData& instance, const char* file);

/// The bytes of a file, whole; fatal as told under loadSource.
std::string readSource(const std::string& path);

}  // namespace morvik
