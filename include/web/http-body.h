// The bodies of posts, made from a script's parameters.
#pragma once

#include <v8.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "web/curl-form.h"

namespace morvik {

/// A field that goes out in the body of a post beside the script's own parameters, without ever
/// standing on an object that a script can reach. It takes the place of a parameter of the same
/// name that is the script object's own; otherwise it follows the object's own parameters and comes
/// before those that the object inherits. It counts as a parameter like any other: with it, a lone
/// file among the script's parameters is no longer the only one.
struct ExtraField {
  std::string name;
  std::string value;  ///< UTF-8; escaped on the wire as any other value
};

/// A urlencoded body, or the raw bytes of a file in its place.
struct Datapost {
  static constexpr std::int32_t kMeasured = -1;

  std::string data;
  std::int32_t len = kMeasured;  ///< a file's size; kMeasured when the text ends at its NUL
};

/// What goes out behind the headers: nothing, fields or a file, or a form.
using HttpBody = std::variant<std::monostate, Datapost, CurlForm>;

/// The parameters as a urlencoded text, or the file when a file is the only parameter. `extra` may
/// be null. Nothing when the script's objects threw; the script then has that exception.
std::optional<Datapost> genCurlPostSimple(v8::Isolate* isolate, v8::Local<v8::Object> params,
                                          const ExtraField* extra = nullptr);

/// The parameters as a form: values, files, and the tokens of social accounts. As above.
std::optional<CurlForm> genCurlPostForm(v8::Isolate* isolate, v8::Local<v8::Object> params,
                                        const ExtraField* extra = nullptr);

}  // namespace morvik
