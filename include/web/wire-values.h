// What the records of the server's messages become in script.
#pragma once

#include <v8.h>

#include <string>
#include <vector>

#include "host/script.h"

namespace morvik {

/// A script text that ends at the first zero byte, on purpose: of a message or a name with one in
/// it the script sees the part in front, and nothing tells it that there was more.
inline v8::Local<v8::String> endMarked(const std::string& text) { return toScript(text.c_str()); }

/// An array of what `convert` makes of each record, in their order.
template <typename Records, typename Convert>
v8::Local<v8::Array> arrayOf(const Records& records, Convert convert) {
  std::vector<v8::Local<v8::Value>> elements;
  for (const auto& record : records) elements.push_back(convert(record));
  return v8::Array::New(v8::Isolate::GetCurrent(), elements.data(), elements.size());
}

}  // namespace morvik
