// HMAC-SHA1 signatures in base64 for scripts, the form that OAuth 1.0 requests need.
#pragma once

#include "host/script.h"

namespace morvik {

/// `signHMACSHA1(text, key)`, on the global object.
void signHMACSHA1(const Args& args);

/// `social.twitter.sign(text)`: signs with the hidden values `consumersecret` and `tokensecret` of
/// social.twitter, whatever it is called on.
void twitterSign(const Args& args);

}  // namespace morvik
