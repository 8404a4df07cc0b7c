// social.facebook and social.soundcloud: get and post, which add the user's token to a request that
// goes to the service's own domain, and hand the script nothing but the answer.
#include "web/social-gateways.h"

#include <glib.h>

#include <optional>
#include <string>

#include "web/hidden-value.h"
#include "web/http-client.h"
#include "web/social-account.h"
#include "web/url-patterns.h"

namespace morvik {
namespace {

struct Gateway {
  const char* service;  // also the name of its object on `social`
  UrlPattern pattern;
  const char* parameter;  // carries the token
};

constexpr Gateway kFacebook = {"facebook", UrlPattern::kFacebook, "access_token"};
constexpr Gateway kSoundcloud = {"soundcloud", UrlPattern::kSoundcloud, "oauth_token"};

// The URL of the call, or nothing after an exception: it is another's.
std::optional<std::string> checkedUrl(const Args& args, const Gateway& gateway) {
  auto url = asciiText(args.GetIsolate(), args[0]);
  if (url && isUrlAuthorised(*url, gateway.pattern)) return url;
  if (url) throwText(args.GetIsolate(), "unauthorised url");
  return std::nullopt;
}

// Behind a fragment as well, and not escaped, both on purpose: for a URL with a fragment the
// service gets no token and answers as to a stranger, and a token with a "&" in it arrives as two
// parameters.
std::string withToken(const std::string& url, const Gateway& gateway, const std::string& token) {
  return url + (hasQuery(url) ? "&" : "?") + gateway.parameter + "=" + token;
}

// What follows the URL does not count: there are no headers on this road.
v8::MaybeLocal<v8::Value> secureHttpGet(const Args& args, const Gateway& gateway,
                                        v8::Local<v8::Value> token) {
  v8::Isolate* isolate = args.GetIsolate();
  g_message("secureHttpGet");
  if (!args[0]->IsString()) {
    throwText(isolate, "Signature error function");
    return {};
  }
  const auto url = checkedUrl(args, gateway);
  if (!url) return {};
  const std::string whole = withToken(*url, gateway, asciiText(isolate, token).value());
  // The one text for all services, and the token in it, are meant so: the log shows
  // "FacebookHttpGet" for soundcloud too, and whoever reads it has the user's token.
  g_message("FacebookHttpGet URL %s", whole.c_str());
  return contentOf(httpget(isolate, whole));
}

// The token goes out beside the script's parameters and never stands among them, where a getter or
// a Proxy could see it.
v8::MaybeLocal<v8::Value> secureHttpPost(const Args& args, const Gateway& gateway,
                                         v8::Local<v8::Value> token) {
  v8::Isolate* isolate = args.GetIsolate();
  g_message("secureHttpPost");
  if (args.Length() < 2 || !args[0]->IsString() || !args[1]->IsObject()) {
    throwText(isolate, "Signature error function");
    return {};
  }
  if (!checkedUrl(args, gateway)) return {};
  const auto arguments = firstArguments(args, kPostArguments);
  const ExtraField extra{gateway.parameter, utf8Text(isolate, token).value()};
  // The count stays the script's own: with more than four, the fourth does not count.
  return contentOf(httppost(isolate, arguments, args.Length(), &extra));
}

using Operation = v8::MaybeLocal<v8::Value> (*)(const Args&, const Gateway&, v8::Local<v8::Value>);

// By name each time, so a function that was taken off its object works as well. Where the script
// has put an object of its own, which has no token, the text of undefined goes out.
void call(const Args& args, const Gateway& gateway, Operation operation) {
  v8::Local<v8::Object> account;
  if (!socialAccount(args.GetIsolate(), gateway.service).ToLocal(&account)) return;
  v8::Local<v8::Value> content;
  if (operation(args, gateway, hidden(account, "token")).ToLocal(&content))
    args.GetReturnValue().Set(content);
}

void facebookGet(const Args& args) { call(args, kFacebook, secureHttpGet); }

void facebookPost(const Args& args) { call(args, kFacebook, secureHttpPost); }

void soundcloudGet(const Args& args) { call(args, kSoundcloud, secureHttpGet); }

void soundcloudPost(const Args& args) { call(args, kSoundcloud, secureHttpPost); }

constexpr Binding kFacebookFunctions[] = {{"get", facebookGet}, {"post", facebookPost}};
constexpr Binding kSoundcloudFunctions[] = {{"get", soundcloudGet}, {"post", soundcloudPost}};

}  // namespace

std::span<const Binding> facebookFunctions() { return kFacebookFunctions; }

std::span<const Binding> soundcloudFunctions() { return kSoundcloudFunctions; }

}  // namespace morvik
