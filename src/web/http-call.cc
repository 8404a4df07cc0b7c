// The transfer itself: libcurl's options, its failure, and the result.
#include "web/http-call.h"

#include <glib.h>

#include "host/script.h"
#include "web/encoding.h"
#include "web/http-buffer.h"
#include "web/owned-curl.h"

namespace morvik {
namespace {

struct Response {
  HttpBuffer body;
  HttpBuffer header;
};

// These options and no others: no time limit, no redirects, no agent. Whoever signed a certificate,
// a script gets the answer; only a name in it that is not the host's is a "curl error".
void describe(CURL* curl, const std::string& url, curl_slist* headers, Response& response) {
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, httpWriteCallback);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &response.body);
  curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, httpWriteCallback);
  curl_easy_setopt(curl, CURLOPT_HEADERDATA, &response.header);
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_HEADER, 0L);
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
}

// libcurl measures a text itself when it is told no size, or -1.
void attach(CURL* curl, const Datapost& post) {
  g_debug("httpCall isForm = false : %s", post.data.c_str());
  g_debug("httpCall datapost.len : %d", post.len);
  curl_easy_setopt(curl, CURLOPT_POSTFIELDS, post.data.c_str());
  if (post.len != 0) curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(post.len));
}

void attach(CURL* curl, const HttpBody& body) {
  if (std::holds_alternative<std::monostate>(body)) return;
  g_debug("datapost != NULL");
  if (const auto* form = std::get_if<CurlForm>(&body)) {
    form->attachTo(curl);
  } else {
    attach(curl, std::get<Datapost>(body));
  }
}

CURLcode transfer(const std::string& url, curl_slist* headers, const HttpBody& body,
                  Response& response) {
  const CurlEasy curl(curl_easy_init());
  if (!curl) return CURLE_FAILED_INIT;
  describe(curl.get(), url, headers, response);
  attach(curl.get(), body);
  return curl_easy_perform(curl.get());
}

// What had arrived of the body is given up; the headers stay.
void fail(CURLcode code, HttpBuffer& body) {
  g_warning("curl error code: %d", static_cast<int>(code));
  assign(body, "curl error");
  g_debug("curl error : %s", reinterpret_cast<const char*>(body.data.get()));
}

v8::MaybeLocal<v8::Value> resultOf(v8::Isolate* isolate, const Response& response) {
  v8::Local<v8::String> header;
  v8::Local<v8::String> content;
  if (!responseText(isolate, response.header.bytes()).ToLocal(&header)) return {};
  if (!responseText(isolate, response.body.bytes()).ToLocal(&content)) return {};
  const auto result = v8::Object::New(isolate);
  setOwn(result, "header", header);
  setOwn(result, "content", content);
  return result;
}

}  // namespace

v8::MaybeLocal<v8::String> responseText(v8::Isolate* isolate, std::string_view bytes) {
  if (bytes.size() <= static_cast<std::size_t>(v8::String::kMaxLength)) return toScript(bytes);
  isolate->ThrowException(v8::Exception::RangeError(toScript("Invalid string length")));
  return {};
}

v8::MaybeLocal<v8::Value> httpCall(v8::Isolate* isolate, const std::string& url,
                                   curl_slist* headers, const HttpBody& body, bool wantObject) {
  Response response;
  const CURLcode code = transfer(url, headers, body, response);
  if (code == CURLE_OK) {
    convertResponseToUtf8(response.body, response.header);
  } else {
    fail(code, response.body);
  }
  if (wantObject) return resultOf(isolate, response);
  return responseText(isolate, response.body.bytes()).FromMaybe(v8::Local<v8::String>());
}

}  // namespace morvik
