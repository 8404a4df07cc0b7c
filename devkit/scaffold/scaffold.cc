// Copies of embedded files, with the new name in them.
#include "scaffold/scaffold.h"

#include <glib.h>

#include <algorithm>
#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "api/editor-files.h"
#include "api/toolbox-files.h"
#include "device/json.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

constexpr const char* kOwnFiles = "devkit/scaffold/files/";

std::vector<AppTemplate> readTemplates() {
  std::vector<AppTemplate> templates;
  for (const Json& one : Json::parse(toolboxFile(std::string(kOwnFiles) + "templates.json"))) {
    templates.push_back({one["name"], one["about"]});
  }
  return templates;
}

const AppTemplate* templateNamed(const std::string& name) {
  const auto& all = appTemplates();
  const auto found = std::ranges::find(all, name, &AppTemplate::name);
  return found != all.end() ? &*found : nullptr;
}

// What a launch line carries, and what stays short enough for a path on a device.
bool isGoodName(const std::string& name) {
  constexpr std::size_t kLongest = 64;
  return !name.empty() && name.size() <= kLongest && name.front() != '-' && name.front() != '.' &&
         std::ranges::all_of(name, [](char letter) {
           return g_ascii_isalnum(letter) != FALSE || letter == '-' || letter == '_';
         });
}

void replaceFirst(std::string& text, std::string_view what, const std::string& by) {
  const std::size_t at = text.find(what);
  if (at != std::string::npos) text.replace(at, what.size(), by);
}

Files filesOf(const AppTemplate& from, const std::string& name) {
  Files files;
  for (const std::string& file : toolboxFolder("apps/" + from.name)) {
    files[file] = toolboxFile("apps/" + from.name + '/' + file);
  }
  replaceFirst(files["main.js"], "// " + from.name + ":", "// " + name + ":");
  replaceFirst(files["test.js"], "// The test of " + from.name + ":",
               "// The test of " + name + ":");
  files.merge(editorFiles());
  return files;
}

// Nothing that is there is replaced.
std::optional<std::string> prepare(const fs::path& folder) {
  std::error_code error;
  if (fs::exists(folder, error)) {
    const bool isEmpty = fs::is_directory(folder, error) && fs::is_empty(folder, error);
    if (!isEmpty) return folder.string() + " is there already, and not an empty folder";
  }
  fs::create_directories(folder, error);
  if (error) return folder.string() + ": " + error.message();
  return std::nullopt;
}

std::optional<std::string> write(const fs::path& path, const std::string& content) {
  GErrorOwned failure;
  if (g_file_set_contents(path.c_str(), content.data(), static_cast<gssize>(content.size()),
                          failure.out()) != FALSE) {
    return std::nullopt;
  }
  return std::string(failure.text());
}

}  // namespace

const std::vector<AppTemplate>& appTemplates() {
  static const std::vector<AppTemplate> templates = readTemplates();
  return templates;
}

std::optional<std::string> makeApplication(const fs::path& folder,
                                           const std::string& templateName) {
  const AppTemplate* from = templateNamed(templateName);
  if (from == nullptr) return "there is no template " + templateName;
  const fs::path plain = folder.has_filename() ? folder : folder.parent_path();
  const std::string name = plain.filename();
  if (!isGoodName(name))
    return "\"" + name + "\" is no name for an application: use letters, digits, - and _";
  if (auto trouble = prepare(plain)) return trouble;
  for (const auto& [file, content] : filesOf(*from, name)) {
    if (auto trouble = write(plain / file, content)) return trouble;
  }
  return std::nullopt;
}

}  // namespace morvik::devkit
