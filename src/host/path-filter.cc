// The filter on script-given file names.
#include "host/path-filter.h"

#include <glib.h>

#include <cstring>

#include "host/script.h"

namespace morvik {
namespace {

// What may stand in a name. Two dots in a row would lead out of the folder, and whatever else is
// missing here could mean something to a program that gets the name further on.
bool isAllowed(char byte, char previous) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' || byte == '/' ||
         (byte == '.' && previous != '.');
}

}  // namespace

// Asked of the name before anything is put in front of it, so a leading slash does no harm. An
// application's descriptor must stay unread and unwritten by its scripts: one that could write it
// would grant itself what it wants at the next launch.
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
