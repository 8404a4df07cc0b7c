// Bodies and headers of requests, made of a script's parameters: what goes out says what the script
// said. An input is the JSON text of the parameters.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzz.h"
#include "fuzz/live-script.h"
#include "web/http-body.h"
#include "web/http-headers.h"

namespace morvik::test {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

int digitOf(char character) {
  return character <= '9' ? character - '0' : (character | ' ') - 'a' + 10;
}

std::string unescaped(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    require(i + 2 < text.size(), "an escape is whole");
    bytes += static_cast<char>(digitOf(text[i + 1]) * 16 + digitOf(text[i + 2]));
    i += 2;
  }
  return bytes;
}

Pairs pairsOf(std::string_view body) {
  Pairs pairs;
  while (!body.empty()) {
    const std::string_view field = body.substr(0, body.find('&'));
    const std::size_t equals = field.find('=');
    require(equals != std::string_view::npos, "a field has a value");
    pairs.emplace_back(unescaped(field.substr(0, equals)), unescaped(field.substr(equals + 1)));
    body.remove_prefix(std::min(field.size() + 1, body.size()));
  }
  return pairs;
}

// Texts on their way to libcurl end at their first zero byte.
std::string upToZero(v8::Local<v8::Value> value) {
  return utf8Text(v8::Isolate::GetCurrent(), value)->c_str();
}

// The parameters of an object that holds no other object.
std::optional<Pairs> flat(v8::Local<v8::Object> params) {
  const auto context = liveScriptKeptForLife().context();
  const auto names = params->GetPropertyNames(context).ToLocalChecked();
  Pairs pairs;
  for (std::uint32_t i = 0; i < names->Length(); ++i) {
    const auto name = names->Get(context, i).ToLocalChecked();
    const auto value = params->Get(context, name).ToLocalChecked();
    if (value->IsObject()) return std::nullopt;
    pairs.emplace_back(upToZero(name), upToZero(value));
  }
  return pairs;
}

}  // namespace

void fuzz(std::string_view input) {
  const Turn turn;
  v8::Local<v8::Value> value;
  if (!fromJson(input).ToLocal(&value) || !value->IsObject()) return;
  const auto params = value.As<v8::Object>();
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::TryCatch thrown(isolate);  // a text of JSON's can be one too many for a text
  const auto body = genCurlPostSimple(isolate, params);
  const auto form = genCurlPostForm(isolate, params);
  CurlList headers;
  static_cast<void>(genCurlHeaders(isolate, params, headers));
  if (const auto pairs = flat(params)) {
    require(body && form, "what holds no object is sent");
    require(pairsOf(body->data) == *pairs, "a body says what the script said");
  }
}

}  // namespace morvik::test
