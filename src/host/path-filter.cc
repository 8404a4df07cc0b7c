// The filter on script-given file names.
#include "host/path-filter.h"

#include <glib.h>

#include <cstring>

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

}  // namespace morvik
