// Reading of the table, and what several of its users say of an entry.
#include "api/table.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "api/toolbox-files.h"

namespace morvik::devkit {
namespace {

std::set<std::string> namesIn(const Json& table) {
  std::set<std::string> names;
  for (const Json& object : table["objects"]) {
    if (object.contains("grant")) names.insert(object["grant"]);
  }
  return names;
}

void addArguments(std::string& list, const Json& arguments) {
  for (const Json& argument : arguments) {
    if (!list.empty()) list += ", ";
    list += argument["name"];
    if (argument.value("optional", false)) list += '?';
  }
}

}  // namespace

const Json& apiTable() {
  static const Json table = Json::parse(toolboxFile("api/script-api.json"));
  return table;
}

const std::set<std::string>& accessNames() {
  static const std::set<std::string> names = namesIn(apiTable());
  return names;
}

bool hasObject(const std::string& path) {
  return std::ranges::any_of(apiTable()["objects"],
                             [&path](const Json& object) { return object["name"] == path; });
}

std::string pathOf(const Json& object, const Json& member) {
  const std::string name = object["name"];
  return (name.empty() ? "" : name + '.') + member["name"].get<std::string>();
}

std::string signatureOf(const Json& function) {
  std::string list;
  addArguments(list, function["arguments"]);
  if (function.contains("callback")) {
    const bool needed = function["callback"].value("needed", false);
    list += (list.empty() ? "fn" : ", fn") + std::string(needed ? "" : "?");
  }
  if (function.contains("after")) addArguments(list, function["after"]);
  return function["name"].get<std::string>() + '(' + list + ')';
}

std::string exampleOf(const Json& function) {
  std::string text;
  for (const Json& line : function["example"]) text += line.get<std::string>() + '\n';
  return text;
}

}  // namespace morvik::devkit
