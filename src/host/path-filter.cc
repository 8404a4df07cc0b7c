// The filter on script-given file names, and the forming of paths in an application's folder.
#include "host/path-filter.h"

#include <glib.h>

#include <cstdio>
#include <cstring>

#include "host/morvik-data.h"
#include "host/script.h"

namespace morvik {
namespace {

bool isAllowed(char byte, char previous) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' || byte == '/' ||
         (byte == '.' && previous != '.');
}

}  // namespace

bool isForbiddenPath(const char* path) {
  if (std::strstr(path, "descriptor.xml") != nullptr) return true;
  char previous = '\0';
  for (; *path != '\0'; previous = *path++) {
    if (!isAllowed(*path, previous)) return true;
  }
  return false;
}

bool refusePath(v8::Isolate* isolate, const std::string& name) {
  if (!isForbiddenPath(name.c_str())) return false;
  const std::string text = "access denied: " + name;
  g_warning("%s", text.c_str());
  throwText(isolate, text);
  return true;
}

std::string appPath(const MorvikData& instance, const char* file, std::size_t size) {
  std::string path(size, '\0');
  std::snprintf(path.data(), size, "%s/%s/%s", instance.options->app_folder,
                instance.appName.c_str(), file);
  return path.c_str();  // up to the end mark
}

}  // namespace morvik
