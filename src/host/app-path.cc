// Paths in an application's folder.
#include "host/app-path.h"

#include <cstdio>
#include <cstring>

#include "host/morvik-data.h"

namespace morvik {

std::string appPath(const MorvikData& instance, const char* file, std::size_t size) {
  std::string path(size, '\0');
  std::snprintf(path.data(), size, "%s/%s/%s", instance.options->app_folder,
                instance.appName.c_str(), file);
  path.resize(std::strlen(path.c_str()));
  return path;
}

}  // namespace morvik
