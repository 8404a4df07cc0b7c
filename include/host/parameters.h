// An application's configuration: config.bin becomes the script's `params`.
#pragma once

#include <v8.h>

#include <string>

namespace morvik {

/// The `params` object from a file that holds one serialised ConfigApp. A file that is missing or
/// cannot be read gives an empty object and a warning; of a corrupt one, whatever the parser got.
v8::Local<v8::Object> loadParameters(const std::string& path);

}  // namespace morvik
