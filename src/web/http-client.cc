// http: get, post, get2, post2, each a transfer of libcurl's of its own.
#include "web/http-client.h"

#include <curl/curl.h>
#include <glib.h>

#include <algorithm>
#include <optional>

#include "host/script.h"
#include "web/encoding.h"
#include "web/http-body.h"
#include "web/http-buffer.h"
#include "web/http-call.h"
#include "web/http-headers.h"
#include "web/owned-curl.h"
#include "web/web.h"

namespace morvik {
namespace {

using Values = std::span<const v8::Local<v8::Value>>;

v8::MaybeLocal<v8::Object> refuse(v8::Isolate* isolate) {
  throwText(isolate, "Signature error function");
  return {};
}

v8::Local<v8::Object> objectOrEmpty(v8::Local<v8::Value> value) {
  return value->IsObject() ? value.As<v8::Object>() : v8::Local<v8::Object>();
}

v8::MaybeLocal<v8::Object> call(v8::Isolate* isolate, const std::string& url,
                                v8::Local<v8::Object> headers, const HttpBody& body) {
  CurlList list;
  if (!genCurlHeaders(isolate, headers, list)) return {};
  v8::Local<v8::Value> result;
  if (!httpCall(isolate, url, list.get(), body, /*wantObject=*/true).ToLocal(&result)) return {};
  return result.As<v8::Object>();
}

v8::MaybeLocal<v8::Object> fetch(v8::Isolate* isolate, const std::string& url,
                                 v8::Local<v8::Object> headers) {
  g_debug("httpget to %s...", url.c_str());
  return call(isolate, url, headers, HttpBody());
}

// A form without parts is no body at all.
std::optional<HttpBody> bodyOf(v8::Isolate* isolate, v8::Local<v8::Object> params, bool isForm,
                               const ExtraField* extra) {
  if (isForm) {
    auto form = genCurlPostForm(isolate, params, extra);
    if (!form) return std::nullopt;
    return form->empty() ? HttpBody() : HttpBody(std::move(*form));
  }
  auto post = genCurlPostSimple(isolate, params, extra);
  if (!post) return std::nullopt;
  return HttpBody(std::move(*post));
}

// Of more arguments than the operation looks at, the others are dropped before anything looks at
// them, and do not count.

v8::MaybeLocal<v8::Object> requestGet(const Args& args) {
  const auto kept = firstArguments(args, kGetArguments);
  return httpget(args.GetIsolate(), kept, static_cast<int>(kept.size()));
}

v8::MaybeLocal<v8::Object> requestPost(const Args& args) {
  const auto kept = firstArguments(args, kPostArguments);
  return httppost(args.GetIsolate(), kept, static_cast<int>(kept.size()));
}

template <typename T>
void give(const Args& args, v8::MaybeLocal<T> result) {
  v8::Local<T> value;
  if (result.ToLocal(&value)) args.GetReturnValue().Set(value);
}

void get(const Args& args) { give(args, contentOf(requestGet(args))); }
void post(const Args& args) { give(args, contentOf(requestPost(args))); }
void get2(const Args& args) { give(args, requestGet(args)); }
void post2(const Args& args) { give(args, requestPost(args)); }

constexpr Binding kFunctions[] = {{"get", get}, {"post", post}, {"get2", get2}, {"post2", post2}};

}  // namespace

std::span<const Binding> httpFunctions() { return kFunctions; }

std::vector<v8::Local<v8::Value>> firstArguments(const Args& args, int limit) {
  std::vector<v8::Local<v8::Value>> values;
  for (int i = 0; i < std::min(args.Length(), limit); ++i) values.push_back(args[i]);
  return values;
}

v8::MaybeLocal<v8::Object> httpget(v8::Isolate* isolate, Values args, int count) {
  g_debug("httpget...");
  if (count < 1 || !args[0]->IsString()) return refuse(isolate);
  v8::Local<v8::Object> headers;
  if (count == 2) headers = objectOrEmpty(args[1]);
  return fetch(isolate, *asciiText(isolate, args[0]), headers);  // a string always has a text
}

v8::MaybeLocal<v8::Object> httpget(v8::Isolate* isolate, const std::string& url) {
  g_debug("httpget...");
  return fetch(isolate, url, {});
}

v8::MaybeLocal<v8::Object> httppost(v8::Isolate* isolate, Values args, int count,
                                    const ExtraField* extra) {
  if (count < 2 || !args[0]->IsString() || !args[1]->IsObject()) return refuse(isolate);
  v8::Local<v8::Object> headers;
  if (count >= 3) headers = objectOrEmpty(args[2]);
  const bool isForm = count == 4 && args[3]->IsTrue();
  const std::string url = *asciiText(isolate, args[0]);
  g_debug("isForm %d", isForm);
  const auto body = bodyOf(isolate, args[1].As<v8::Object>(), isForm, extra);
  if (!body) return {};
  g_debug("httppost to %s...", url.c_str());
  return call(isolate, url, headers, *body);
}

// An own property of a plain object: reading it runs no script.
v8::MaybeLocal<v8::Value> contentOf(v8::MaybeLocal<v8::Object> result) {
  v8::Local<v8::Object> object;
  if (!result.ToLocal(&object)) return {};
  return object->Get(v8::Isolate::GetCurrent()->GetCurrentContext(), toScript("content"));
}

}  // namespace morvik
