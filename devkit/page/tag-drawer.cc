// tags.json.
#include "page/tag-drawer.h"

#include <glib/gstdio.h>

#include <nlohmann/json.hpp>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

constexpr int kOwnerOnly = 0600;
constexpr int kFolderForOwnerOnly = 0700;

}  // namespace

TagDrawer::TagDrawer(const std::string& folder) : folder_(folder), file_(folder + "/tags.json") {}

Json TagDrawer::tags(std::string& trouble) const {
  char* content = nullptr;
  gsize size = 0;
  if (g_file_get_contents(file_.c_str(), &content, &size, nullptr) == FALSE) return Json::array();
  const GText owned(content);
  Json tags = Json::parse(content, content + size, nullptr, /*allow_exceptions=*/false);
  if (tags.is_array()) return tags;
  const std::string aside = file_ + ".damaged";
  g_rename(file_.c_str(), aside.c_str());
  trouble = "the saved tags cannot be read; they are kept as " + aside;
  return Json::array();
}

Outcome TagDrawer::save(const Json& tags) const {
  const std::string text = tags.dump(2) + "\n";
  GErrorOwned error;
  g_mkdir_with_parents(folder_.c_str(), kFolderForOwnerOnly);
  const bool saved =
      g_file_set_contents_full(file_.c_str(), text.data(), static_cast<gssize>(text.size()),
                               G_FILE_SET_CONTENTS_CONSISTENT, kOwnerOnly, error.out()) != FALSE;
  return {saved, saved ? "" : std::string("the tags are not saved: ") + error.text()};
}

}  // namespace morvik::devkit
