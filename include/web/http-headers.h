// Request headers, made from what a script hands over.
#pragma once

#include <v8.h>

#include "web/owned-curl.h"

namespace morvik {

/// Adds a line for each property of `headers`, or of each object in it when it is an array, to
/// `list`. An empty handle adds nothing. False when the script's objects threw; the script then has
/// that exception.
[[nodiscard]] bool genCurlHeaders(v8::Isolate* isolate, v8::Local<v8::Object> headers,
                                  CurlList& list);

/// Adds a line for each property of one object. As above.
[[nodiscard]] bool appendCurlHeaders(v8::Isolate* isolate, v8::Local<v8::Object> map,
                                     CurlList& list);

}  // namespace morvik
