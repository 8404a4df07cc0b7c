// http: get, post, get2, post2, each a transfer of libcurl's of its own.
#include "web/http-client.h"

#include <curl/curl.h>
#include <glib.h>

#include <algorithm>
#include <array>
#include <optional>

#include "host/owned.h"
#include "host/script.h"
#include "web/encoding.h"
#include "web/http-body.h"
#include "web/http-buffer.h"
#include "web/http-call.h"
#include "web/http-headers.h"
#include "web/web.h"

namespace morvik {
namespace {

using Values = std::span<const v8::Local<v8::Value>>;

constexpr int kGetArguments = 2;
constexpr int kPostArguments = 4;

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

// Nothing when the script threw. A form without parts is no body at all.
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

// The script's arguments up to a limit; those beyond are dropped before anything looks at them.
template <int limit>
class Kept {
 public:
  explicit Kept(const Args& args) : count_(std::min(args.Length(), limit)) {
    for (int i = 0; i < count_; ++i) values_[static_cast<std::size_t>(i)] = args[i];
  }
  [[nodiscard]] Values values() const { return Values(values_).first(std::size_t(count_)); }
  [[nodiscard]] int count() const { return count_; }

 private:
  std::array<v8::Local<v8::Value>, limit> values_;
  int count_;
};

v8::MaybeLocal<v8::Object> requestGet(const Args& args) {
  const Kept<kGetArguments> kept(args);
  return httpget(args.GetIsolate(), kept.values(), kept.count());
}

v8::MaybeLocal<v8::Object> requestPost(const Args& args) {
  const Kept<kPostArguments> kept(args);
  return httppost(args.GetIsolate(), kept.values(), kept.count());
}

void give(const Args& args, v8::MaybeLocal<v8::Value> result) {
  v8::Local<v8::Value> value;
  if (result.ToLocal(&value)) args.GetReturnValue().Set(value);
}

void get(const Args& args) { give(args, contentOf(requestGet(args))); }
void post(const Args& args) { give(args, contentOf(requestPost(args))); }
void get2(const Args& args) { give(args, requestGet(args).FromMaybe(v8::Local<v8::Object>())); }
void post2(const Args& args) { give(args, requestPost(args).FromMaybe(v8::Local<v8::Object>())); }

constexpr Binding kFunctions[] = {{"get", get}, {"post", post}, {"get2", get2}, {"post2", post2}};

}  // namespace

std::span<const Binding> httpFunctions() { return kFunctions; }

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
