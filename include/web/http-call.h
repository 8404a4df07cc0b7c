// One transfer, from the request's parts to what the script gets.
#pragma once

#include <curl/curl.h>
#include <v8.h>

#include <string>
#include <string_view>

#include "web/http-body.h"

namespace morvik {

/// Performs the request and gives an object with the texts `header` and `content`, or the content
/// alone without `wantObject`. A transfer that fails has the content "curl error". Without a body
/// it is a GET, with one a POST. `headers` may be null and stays the caller's.
///
/// Empty, with an exception for the script, when a text is longer than the engine can hold.
v8::MaybeLocal<v8::Value> httpCall(v8::Isolate* isolate, const std::string& url,
                                   curl_slist* headers, const HttpBody& body, bool wantObject);

/// Received bytes as a text, taken as UTF-8, NULs included. Empty, with a RangeError for the
/// script, when there are more than any text of the engine's can have.
v8::MaybeLocal<v8::String> responseText(v8::Isolate* isolate, std::string_view bytes);

}  // namespace morvik
