// Hands an application's scripts to the rules, and makes findings of what they say.
#include "check/scripts.h"

#include <glib.h>

#include <algorithm>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "api/table.h"
#include "check/script-engine.h"
#include "check/source-text.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using Findings = std::vector<FolderTrouble>;
using Sources = std::map<std::string, std::string>;  // bytes by name

// What is beyond is no application.
constexpr int kDeepestFolder = 6;
constexpr std::size_t kMostFiles = 5000;

bool isLookedAt(const std::string& name) {
  return !name.starts_with('.') && name != "node_modules" &&
         g_utf8_validate(name.data(), static_cast<gssize>(name.size()), nullptr) != FALSE;
}

// Names below the folder. Hidden ones, modules of another world and names that no script can write
// are left out; a link that leads nowhere is no file.
std::vector<std::string> namesBelow(const fs::path& folder) {
  constexpr auto kOptions = fs::directory_options::skip_permission_denied;
  std::vector<std::string> names;
  std::error_code error;
  std::error_code ignored;
  for (fs::recursive_directory_iterator entry(folder, kOptions, error), end;
       !error && entry != end && names.size() < kMostFiles; entry.increment(error)) {
    const bool lookedAt = isLookedAt(entry->path().filename());
    if (!lookedAt || entry.depth() >= kDeepestFolder) entry.disable_recursion_pending();
    if (!lookedAt || !entry->is_regular_file(ignored)) continue;
    names.push_back(entry->path().lexically_relative(folder));
  }
  std::ranges::sort(names);
  return names;
}

Sources scriptsAmong(const fs::path& folder, const std::vector<std::string>& names) {
  Sources sources;
  for (const std::string& name : names) {
    if (!name.ends_with(".js") || isTestScript(name)) continue;
    if (auto bytes = bytesOf(folder / name)) sources[name] = std::move(*bytes);
  }
  return sources;
}

Json inputOf(const Sources& sources, const std::vector<std::string>& names, const std::string& app,
             const Grants& grants) {
  Json files = Json::object();
  for (const auto& [name, bytes] : sources) files[name] = sourceIn(bytes);
  Json granted = grants.meant;
  for (const auto& [name, place] : grants.granted) granted.push_back(name);
  return {{"table", apiTable()},
          {"files", std::move(files)},
          {"names", names},
          {"app", app},
          {"granted", grants.known ? granted : Json()}};
}

// What the engine's words mean to an author.
std::string cureOf(const std::string& text) {
  const auto tells = [&text](const char* part) { return text.find(part) != std::string::npos; };
  if (tells("import") || tells("'export'"))
    return "There are no modules: include('words.js') runs another file in the same global object.";
  if (tells("await is only valid")) return "await works in a function that is declared async.";
  return "";
}

void tellSyntax(const std::string& file, const SyntaxError& error, Findings& findings) {
  findings.push_back({.file = file,
                      .line = error.line,
                      .column = error.column,
                      .text = error.text,
                      .refuses = file == "main.js",
                      .kind = "syntax",
                      .cure = cureOf(error.text)});
}

void addFindings(const Json& told, Findings& findings) {
  for (const Json& one : told) {
    findings.push_back({.file = one["file"],
                        .line = one["line"],
                        .column = one["column"],
                        .text = one["text"],
                        .refuses = false,
                        .kind = one["kind"],
                        .cure = one["cure"]});
  }
}

void tellUnused(const Grants& grants, const std::set<std::string>& used, Findings& findings) {
  for (const auto& [name, place] : grants.granted) {
    if (used.contains(name)) continue;
    findings.push_back({.file = "descriptor.xml",
                        .line = place.line,
                        .column = place.column,
                        .text = name + " is granted and never used",
                        .refuses = false,
                        .kind = "never-used",
                        .cure = "Ask for nothing that the application does not need."});
  }
}

void checkSource(ScriptEngine& engine, const std::string& file, const std::string& bytes,
                 Findings& findings) {
  checkSourceBytes(file, bytes, findings);
  if (const auto error = engine.compile(file, sourceIn(bytes))) tellSyntax(file, *error, findings);
}

}  // namespace

void checkScripts(const fs::path& folder, const std::string& app, const Grants& grants,
                  Findings& findings) {
  const auto names = namesBelow(folder);
  const Sources sources = scriptsAmong(folder, names);
  if (!sources.contains("main.js")) return;
  ScriptEngine engine;
  const Json told = engine.call("checkScripts", inputOf(sources, names, app, grants));
  for (const std::string file : told["reached"])
    checkSource(engine, file, sources.at(file), findings);
  for (const std::string file : told["read"]) {
    if (const auto bytes = bytesOf(folder / file)) checkTextFile(file, *bytes, findings);
  }
  addFindings(told["findings"], findings);
  if (!told["used"].is_null()) tellUnused(grants, told["used"], findings);
}

}  // namespace morvik::devkit
