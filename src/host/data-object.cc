// Objects that stand for a file, and the reading of it.
#include "host/data-object.h"

#include <glib.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/morvik-data.h"
#include "host/script.h"

namespace morvik {
namespace {

// The functions that read give the system's number for what went wrong, or 0.

// One byte more, for the end that makes the bytes a text.
int readBytes(std::FILE* file, std::size_t size, MallocBytes& bytes) {
  bytes.reset(static_cast<unsigned char*>(std::malloc(size + 1)));
  if (!bytes) return errno;
  const std::size_t length = std::fread(bytes.get(), 1, size, file);
  bytes.get()[length] = '\0';
  return std::ferror(file) == 0 ? 0 : errno;  // a directory opens and does not read
}

// The size is the file's at this moment. One that grows meanwhile is cut, one that shrinks gives
// what there was.
int readWhole(const std::string& path, ResourceBuffer& buffer) {
  const File file(std::fopen(path.c_str(), "r"));
  struct stat facts {};
  if (!file || stat(path.c_str(), &facts) != 0) return errno;
  buffer.size = static_cast<std::int32_t>(facts.st_size);
  return readBytes(file.get(), static_cast<std::size_t>(facts.st_size), buffer.data);
}

// Up to the first zero byte: scripts cannot read binary files on this road.
v8::Local<v8::String> textOf(const ResourceBuffer& buffer) {
  return toScript(reinterpret_cast<const char*>(buffer.data.get()));
}

// One for the application's life: the engine keeps every template that it has made an object of.
v8::Local<v8::ObjectTemplate> shapeWithText(v8::Isolate* isolate) {
  auto& kept = currentInstance(isolate).dataObject;
  if (!kept.IsEmpty()) return kept.Get(isolate);
  const auto shape = v8::ObjectTemplate::New(isolate);
  shape->SetInternalFieldCount(kDataFields);
  shape->SetAccessor(toScript("text").As<v8::Name>(), textGetter, ignoreAssignment);
  kept.Set(isolate, shape);
  return shape;
}

}  // namespace

// For the files of events, which are not the application's own: it can send or play them and cannot
// read them, so there is no `text`.
v8::Local<v8::Object> newDataObject(v8::Local<v8::Context> context, const std::string& path) {
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

v8::Local<v8::Object> getDataResource(const std::string& path) {
  g_debug("getDataResource(%s)", path.c_str());
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  v8::EscapableHandleScope handles(isolate);
  const auto shape = shapeWithText(isolate);
  const auto object = shape->NewInstance(isolate->GetCurrentContext()).ToLocalChecked();
  object->SetInternalField(kBufferField, v8::External::New(isolate, nullptr));
  object->SetInternalField(kPathField, toScript(path));
  return handles.Escape(object);
}

void textGetter(v8::Local<v8::Name> /*name*/, const v8::PropertyCallbackInfo<v8::Value>& info) {
  // A script reaches this getter with objects that stand for no file: what `new (x.constructor)`
  // makes has the fields and nothing in them. It reads as a file that is missing.
  const auto field = dataPath(info.Holder());
  const std::string path = field ? *asciiText(info.GetIsolate(), *field) : "";
  g_message("path %s", path.c_str());
  const auto buffer = loadResource(path);
  if (!buffer) return throwText(info.GetIsolate(), "cannot open resource: " + path);
  info.GetReturnValue().Set(textOf(*buffer));
}

std::unique_ptr<ResourceBuffer> loadResource(const std::string& path) {
  auto buffer = std::make_unique<ResourceBuffer>();
  const int error = readWhole(path, *buffer);
  if (error == 0) return buffer;
  g_warning("%s", std::strerror(error));
  return nullptr;
}

}  // namespace morvik
