// The script's object that keeps a service's secrets.
#pragma once

#include <v8.h>

#include <string_view>

namespace morvik {

/// `social.<service>`, the object that keeps a service's secrets, looked up from the global object
/// each time: whoever asks need not be called on it. A script may have put another object there,
/// which keeps none. Empty when the look-up threw, which a script can bring about as well; the
/// script then has that exception.
v8::MaybeLocal<v8::Object> socialAccount(v8::Isolate* isolate, std::string_view service);

}  // namespace morvik
