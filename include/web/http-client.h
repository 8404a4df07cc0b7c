// Blocking HTTP and HTTPS requests for scripts: `http.get`, `post`, `get2`, `post2`, and the two
// operations behind them for callers inside the program.
//
// A request returns when its transfer has ended; there is no time limit. Nothing lasts between two
// requests.
#pragma once

#include <v8.h>

#include <span>
#include <string>
#include <vector>

#include "host/script.h"
#include "web/http-body.h"

namespace morvik {

/// The first arguments of a call, `limit` of them at the most.
std::vector<v8::Local<v8::Value>> firstArguments(const Args& args, int limit);

/// How many arguments the operations look at.
inline constexpr int kGetArguments = 2;
inline constexpr int kPostArguments = 4;

/// GET of args[0], with the headers args[1] when `count` is 2 and it is an object. `args` holds the
/// first arguments of the script, as many as the operation looks at, or all when there are fewer.
/// `count` may be larger: it is what the caller says was given.
///
/// Gives an object with the texts `header` and `content`. A failed transfer is no failure here: its
/// `content` is "curl error". Empty when the script has an exception: refused arguments, or what
/// its own objects threw while they were read; nothing was sent then.
v8::MaybeLocal<v8::Object> httpget(v8::Isolate* isolate, std::span<const v8::Local<v8::Value>> args,
                                   int count);

/// GET of a URL that no script has written itself, without headers. Gives the same.
v8::MaybeLocal<v8::Object> httpget(v8::Isolate* isolate, const std::string& url);

/// POST to args[0] with the parameters args[1], the headers args[2], and args[3] telling whether it
/// goes as a form; args[3] counts only when `count` is exactly 4. `args` and the result are as for
/// httpget, with four arguments looked at. `extra` may be null and is read before the call returns.
v8::MaybeLocal<v8::Object> httppost(v8::Isolate* isolate,
                                    std::span<const v8::Local<v8::Value>> args, int count,
                                    const ExtraField* extra = nullptr);

/// The `content` of what httpget or httppost gave; empty when that is empty.
v8::MaybeLocal<v8::Value> contentOf(v8::MaybeLocal<v8::Object> result);

}  // namespace morvik
