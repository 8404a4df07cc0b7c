// Script objects that stand for a file: two internal fields, of which field 1 holds the path. A
// script cannot read them and only hands them on.
#pragma once

#include <v8.h>

#include <optional>
#include <string>

namespace morvik {

inline constexpr int kDataFields = 2;
inline constexpr int kPathField = 1;

/// A data object without anything that a script can see.
v8::Local<v8::Object> newFileObject(v8::Local<v8::Context> context, const std::string& path);

/// The path that a data object stands for, or nothing for every other value.
std::optional<v8::Local<v8::String>> dataPath(v8::Local<v8::Value> value);

}  // namespace morvik
