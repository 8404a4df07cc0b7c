// include, file.read and file.write: an application's own folder, behind the path filter.
#include "host/resources.h"

#include <glib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/app-path.h"
#include "host/data-object.h"
#include "host/morvik-data.h"
#include "host/owned.h"
#include "host/path-filter.h"
#include "host/source.h"

namespace morvik {
namespace {

// A script that compares exceptions sees these words here and "Wrong arguments" elsewhere.
constexpr const char* kWrongSignature = "Signature error function";

// Only plain strings pass, without any conversion: a number would be a file's name otherwise.
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

// Gives the system's number for what went wrong, or 0. A file that could be opened has lost what it
// held by then.
int replaceFile(const std::string& path, const std::string& content) {
  File file(std::fopen(path.c_str(), "w+"));
  if (!file || std::fputs(content.c_str(), file.get()) == EOF) return errno;
  return std::fclose(file.release()) == 0 ? 0 : errno;  // a full disk may show only here
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

constexpr Binding kFileFunctions[] = {{"read", readFile}, {"write", writeFile}};

}  // namespace

std::span<const Binding> fileFunctions() { return kFileFunctions; }

// What goes wrong in the included file goes to the caller, who may catch it. That the file is not
// there is fatal, as for main.js. Names count from the application's folder, also within an
// included file, and a file that is included twice runs twice.
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

}  // namespace morvik
