// A look into the resources that glib-compile-resources made.
#include "page/page-files.h"

#include <algorithm>
#include <iterator>

// Made by glib-compile-resources.
extern "C" GResource* morvikPage_get_resource();

namespace morvik::devkit {
namespace {

struct Type {
  std::string_view ending;
  const char* type;
};

constexpr Type kTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
};

const char* typeOf(std::string_view name) {
  const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes), [name](const Type& type) {
    return name.ends_with(type.ending);
  });
  return found != std::end(kTypes) ? found->type : "application/octet-stream";
}

}  // namespace

std::optional<PageFile> pageFile(std::string_view name) {
  if (name.empty()) name = "index.html";
  if (name.find('/') != std::string_view::npos) return std::nullopt;  // they lie in no folders
  const std::string path = "/page/" + std::string(name);
  GBytesOwned content(g_resource_lookup_data(morvikPage_get_resource(), path.c_str(),
                                             G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  if (content == nullptr) return std::nullopt;
  return PageFile{std::move(content), typeOf(name)};
}

std::vector<std::string> pageModules() {
  const GTexts all(g_resource_enumerate_children(morvikPage_get_resource(), "/page/",
                                                 G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  std::vector<std::string> modules;
  for (char** name = all.get(); name != nullptr && *name != nullptr; ++name) {
    if (std::string_view(*name).ends_with(".js")) modules.emplace_back(*name);
  }
  return modules;
}

}  // namespace morvik::devkit
