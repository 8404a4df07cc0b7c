// Objects that stand for a file.
#include "host/data-object.h"

#include "host/script.h"

namespace morvik {

v8::Local<v8::Object> newFileObject(v8::Local<v8::Context> context, const std::string& path) {
  const auto shape = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  shape->SetInternalFieldCount(kDataFields);
  const auto object = shape->NewInstance(context).ToLocalChecked();
  object->SetInternalField(kPathField, toScript(path));
  return object;
}

// The engine gives objects of its own, such as array buffers, internal fields too: those hold no
// text.
std::optional<v8::Local<v8::String>> dataPath(v8::Local<v8::Value> value) {
  if (!value->IsObject()) return std::nullopt;
  const auto object = value.As<v8::Object>();
  if (object->InternalFieldCount() < kDataFields) return std::nullopt;
  const v8::Local<v8::Value> path = object->GetInternalField(kPathField);
  if (!path->IsString()) return std::nullopt;
  return path.As<v8::String>();
}

}  // namespace morvik
