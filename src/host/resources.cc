// include, file.read, file.write and data objects: an application's own folder, behind the path
// filter.
#include "host/resources.h"

#include <glib.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/app-path.h"
#include "host/data-object.h"
#include "host/morvik-data.h"
#include "host/path-filter.h"
#include "host/source.h"

namespace morvik {
namespace {

constexpr int kBufferField = 0;

// These words, not the usual "Wrong arguments", on purpose.
constexpr const char* kWrongSignature = "Signature error function";

bool areStrings(const Args& args, int count) {
  if (args.Length() != count) return false;
  for (int index = 0; index < count; ++index) {
    if (!args[index]->IsString()) return false;
  }
  return true;
}

std::string resourcePath(v8::Isolate* isolate, const std::string& name) {
  return appPath(currentInstance(isolate), name.c_str(), kResourcePathSize);
}

// Opens the file only when a script asks for the object's text.
void readFile(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!areStrings(args, 1)) return throwText(isolate, kWrongSignature);
  const std::string name = ArgumentReader(args).ascii(0);
  if (refusePath(isolate, name)) return;
  args.GetReturnValue().Set(getDataResource(resourcePath(isolate, name)));
}

// What follows here gives the system's number for what went wrong, or 0.

int replaceFile(const std::string& path, const std::string& content) {
  File file(std::fopen(path.c_str(), "w+"));
  if (!file || std::fputs(content.c_str(), file.get()) == EOF) return errno;
  return std::fclose(file.release()) == 0 ? 0 : errno;  // a full disk may show only here
}

int readBytes(std::FILE* file, std::size_t size, MallocBytes& bytes) {
  bytes.reset(static_cast<unsigned char*>(std::malloc(size + 1)));
  if (!bytes) return errno;
  const std::size_t length = std::fread(bytes.get(), 1, size, file);
  bytes.get()[length] = '\0';
  return std::ferror(file) == 0 ? 0 : errno;  // a directory opens and does not read
}

int readWhole(const std::string& path, ResourceBuffer& buffer) {
  const File file(std::fopen(path.c_str(), "r"));
  struct stat facts {};
  if (!file || stat(path.c_str(), &facts) != 0) return errno;
  buffer.size = static_cast<std::int32_t>(facts.st_size);
  return readBytes(file.get(), static_cast<std::size_t>(facts.st_size), buffer.data);
}

void writeFile(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!areStrings(args, 2)) return throwText(isolate, kWrongSignature);
  ArgumentReader reader(args);
  const std::string name = reader.ascii(0);
  if (refusePath(isolate, name)) return;
  const int error = replaceFile(resourcePath(isolate, name), reader.ascii(1));
  if (error == 0) return;
  g_warning("%s", std::strerror(error));
  throwText(isolate, std::strerror(error));
}

v8::Local<v8::String> textOf(const ResourceBuffer& buffer) {
  return toScript(reinterpret_cast<const char*>(buffer.data.get()));
}

// One for the application's life: the engine keeps every template that it has made an object of.
v8::Local<v8::ObjectTemplate> resourceShape(v8::Isolate* isolate) {
  auto& kept = currentInstance(isolate).resource;
  if (!kept.IsEmpty()) return kept.Get(isolate);
  const auto shape = v8::ObjectTemplate::New(isolate);
  shape->SetInternalFieldCount(kDataFields);
  shape->SetAccessor(toScript("text").As<v8::Name>(), textGetter, ignoreAssignment);
  kept.Set(isolate, shape);
  return shape;
}

constexpr Binding kFileFunctions[] = {{"read", readFile}, {"write", writeFile}};

}  // namespace

std::span<const Binding> fileFunctions() { return kFileFunctions; }

// What goes wrong in the included file goes to the caller, who may catch it.
void include(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  if (!areStrings(args, 1)) return throwText(isolate, "Must contain only one file");
  const std::string name = ArgumentReader(args).ascii(0);
  if (refusePath(isolate, name)) return;
  g_debug("Include: %s", name.c_str());
  const auto context = isolate->GetCurrentContext();
  const auto source = loadSource(currentInstance(isolate), name.c_str());
  v8::ScriptOrigin origin(isolate, toScript(name));
  v8::Local<v8::Script> script;
  if (!v8::Script::Compile(context, source, &origin).ToLocal(&script)) return;
  [[maybe_unused]] const auto dropped = script->Run(context);
}

v8::Local<v8::Object> getDataResource(const std::string& path) {
  g_debug("getDataResource(%s)", path.c_str());
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  v8::EscapableHandleScope handles(isolate);
  const auto shape = resourceShape(isolate);
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
