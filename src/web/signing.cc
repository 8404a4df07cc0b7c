// Signatures for scripts: with a key of the script's own, or with secrets that it may not read.
#include "web/signing.h"

#include <glib.h>

#include <array>

#include "web/base64.h"
#include "web/encoding.h"
#include "web/hidden-value.h"
#include "web/hmac-sha1.h"
#include "web/owned-curl.h"
#include "web/social-account.h"

namespace morvik {
namespace {

constexpr const char* kTwitter = "twitter";

v8::Local<v8::String> signature(std::string_view text, std::string_view key) {
  HmacSha1 hmac;
  std::array<unsigned char, HmacSha1::kDigestSize> digest{};
  hmac.sign(text, key, digest);
  return toScript(base64Encode(digest));
}

std::string escaped(const std::string& secret) {
  char* text = nullptr;
  urlEncode(secret.c_str(), &text);
  const CurlText owned(text);
  return owned ? std::string(owned.get()) : std::string();
}

std::string secretOf(v8::Local<v8::Object> account, const char* name) {
  return *asciiText(account->GetIsolate(), hidden(account, name));
}

// Both secrets are escaped, so that the one "&" is always the separator. They are of one object: a
// key with one secret in it and a text of the script's choice would tell that secret sooner.
std::optional<std::string> twitterKey(v8::Isolate* isolate) {
  v8::Local<v8::Object> account;
  if (!socialAccount(isolate, kTwitter).ToLocal(&account)) return std::nullopt;
  const std::string consumer = escaped(secretOf(account, "consumersecret"));
  return consumer + "&" + escaped(secretOf(account, "tokensecret"));
}

}  // namespace

void signHMACSHA1(const Args& args) {
  if (args.Length() != 2) return throwText(args.GetIsolate(), "SignHMACSHA1: Wrong arguments");
  ArgumentReader reader(args);
  const std::string text = reader.ascii(0);
  const std::string key = reader.ascii(1);
  if (!reader.threw()) args.GetReturnValue().Set(signature(text, key));
}

void twitterSign(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (args.Length() != 1 || !args[0]->IsString()) {
    g_warning("TwitterSign Wrong arguments");
    return throwText(isolate, "Wrong arguments");
  }
  const auto key = twitterKey(isolate);
  if (key) args.GetReturnValue().Set(signature(*asciiText(isolate, args[0]), *key));
}

}  // namespace morvik
