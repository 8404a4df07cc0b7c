// A look into the resources that glib-compile-resources made.
#include "api/toolbox-files.h"

#include <algorithm>
#include <memory>

#include "device/owned.h"

// Made by glib-compile-resources.
extern "C" GResource* morvikToolbox_get_resource();

namespace morvik::devkit {
namespace {

constexpr const char* kRoot = "/toolbox/";

using Bytes = std::unique_ptr<GBytes, Release<g_bytes_unref>>;

}  // namespace

// The bytes are part of the program, and stay when the object that refers to them goes.
std::string_view toolboxFile(const std::string& path) {
  const Bytes bytes(g_resource_lookup_data(morvikToolbox_get_resource(), (kRoot + path).c_str(),
                                           G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  if (!bytes) g_error("morvik-dev was built without %s", path.c_str());
  gsize size = 0;
  const void* content = g_bytes_get_data(bytes.get(), &size);
  return {static_cast<const char*>(content), size};
}

std::vector<std::string> toolboxFolder(const std::string& path) {
  const GTexts children(g_resource_enumerate_children(
      morvikToolbox_get_resource(), (kRoot + path).c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  std::vector<std::string> names;
  for (char** name = children.get(); name != nullptr && *name != nullptr; ++name) {
    names.emplace_back(*name);
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace morvik::devkit
