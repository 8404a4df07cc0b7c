// From script objects to header lines.
#include "web/http-headers.h"

#include <glib.h>

#include <string>

#include "host/memory.h"
#include "host/script.h"

namespace morvik {
namespace {

void append(CurlList& list, const std::string& line) {
  curl_slist* grown = curl_slist_append(list.get(), line.c_str());
  // A request without one of its lines would be another request, and nobody would know.
  if (grown == nullptr) endForWantOfMemory("a header line does not fit");
  static_cast<void>(list.release());
  list.reset(grown);
}

bool appendProperty(v8::Isolate* isolate, v8::Local<v8::Object> map, v8::Local<v8::Value> key,
                    CurlList& list) {
  v8::Local<v8::Value> value;
  if (!map->Get(isolate->GetCurrentContext(), key).ToLocal(&value)) return false;
  const auto name = asciiText(isolate, key);
  const auto text = name ? asciiText(isolate, value) : std::nullopt;
  if (!text) return false;
  g_debug("HEADER %s => %s", name->c_str(), text->c_str());
  append(list, *name + ": " + *text);
  return true;
}

bool appendElements(v8::Isolate* isolate, v8::Local<v8::Array> maps, CurlList& list) {
  for (std::uint32_t i = 0; i < maps->Length(); ++i) {
    const v8::HandleScope handles(isolate);
    g_debug("array [%u]", i);
    v8::Local<v8::Value> map;
    if (!maps->Get(isolate->GetCurrentContext(), i).ToLocal(&map)) return false;
    if (map->IsObject() && !appendCurlHeaders(isolate, map.As<v8::Object>(), list)) return false;
  }
  return true;
}

}  // namespace

bool appendCurlHeaders(v8::Isolate* isolate, v8::Local<v8::Object> map, CurlList& list) {
  const v8::Local<v8::Context> context = isolate->GetCurrentContext();
  v8::Local<v8::Array> names;
  if (!map->GetPropertyNames(context).ToLocal(&names)) return false;
  g_debug("Headers : %u", names->Length());
  for (std::uint32_t i = 0; i < names->Length(); ++i) {
    const v8::HandleScope handles(isolate);
    v8::Local<v8::Value> name;
    if (!names->Get(context, i).ToLocal(&name)) continue;
    if (!appendProperty(isolate, map, name, list)) return false;
  }
  return true;
}

bool genCurlHeaders(v8::Isolate* isolate, v8::Local<v8::Object> headers, CurlList& list) {
  if (headers.IsEmpty()) return true;
  if (headers->IsArray()) {
    g_debug("header array");
    return appendElements(isolate, headers.As<v8::Array>(), list);
  }
  g_debug("header map");
  return appendCurlHeaders(isolate, headers, list);
}

}  // namespace morvik
