// Entries of the table to Markdown.
#include "api/reference.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "api/table.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

constexpr const char* kInteractive = "Must be in interactive mode";

std::string inCode(const std::string& text) { return '`' + text + '`'; }

// A vertical bar would end a cell.
std::string inCell(std::string text) {
  for (std::size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
    text.insert(at, 1, '\\');
  }
  return text;
}

std::string asThrown(const Json& function) {
  std::vector<std::string> texts;
  for (const Json& text : function["throws"]) {
    texts.push_back("`\"" + text.get<std::string>() + "\"`");
  }
  if (function.value("interactive", false)) {
    texts.push_back("`\"" + std::string(kInteractive) + "\"`");
  }
  return texts.empty() ? "" : "Throws " + listed(texts) + ".";
}

const Json& typeNamed(const std::string& name) {
  static const Json unknown = Json::object();
  const Json& types = apiTable()["types"];
  const auto found =
      std::ranges::find_if(types, [&](const Json& one) { return one["name"] == name; });
  return found != types.end() ? *found : unknown;
}

std::string rangeOf(const Json& type) {
  if (!type.contains("least")) return "";
  return std::string(type.value("whole", false) ? ", a whole number" : ", a number") + " from " +
         type["least"].dump() + " to " + type["most"].dump();
}

std::string namesOf(const Json& type) {
  if (!type.contains("names")) return "";
  std::vector<std::string> names;
  for (const Json& name : type["names"]) names.push_back("`\"" + name.get<std::string>() + "\"`");
  return ": " + listed(names);
}

std::string argumentLine(const Json& argument) {
  const std::string name = argument["type"];
  const Json& type = typeNamed(name);
  return "- " + inCode(argument["name"]) +
         (argument.value("optional", false) ? ", which may be left out" : "") + ": " +
         (type.empty() ? inCode(name) : type["about"].get<std::string>()) +
         (type.empty() ? "" : " (" + inCode(name) + rangeOf(type) + ")") + namesOf(type) + "\n";
}

std::string callbackLine(const Json& callback) {
  if (callback.value("never", false)) return "- `fn` is taken and never called\n";
  std::vector<std::string> heard;
  for (const Json& value : callback["hears"]) {
    heard.push_back(inCode(value["name"]) + " (" + inCode(value["type"]) + ")");
  }
  return std::string("- `fn`") +
         (callback.value("needed", false) ? "" : ", which may be left out,") + " hears " +
         (heard.empty() ? "nothing" : listed(heard)) +
         (callback.value("stays", false) ? ", and stays for as long as it returns `true`" : "") +
         "\n";
}

std::string detailsOf(const Json& object, const Json& function) {
  const std::string path = pathOf(object, function);
  std::string text =
      "#### `" + path + "`\n\n`" + signatureOf(function) + "`" +
      (function.contains("returns") ? " gives " + inCode(function["returns"]) : std::string()) +
      "\n\n";
  for (const Json& argument : function["arguments"]) text += argumentLine(argument);
  if (function.contains("callback")) text += callbackLine(function["callback"]);
  for (const Json& argument : function.value("after", Json::array()))
    text += argumentLine(argument);
  const std::string thrown = asThrown(function);
  if (!text.ends_with("\n\n")) text += "\n";
  if (!thrown.empty()) text += thrown + "\n\n";
  return text + "```js\n" + exampleOf(function) + "```\n";
}

std::string valueRow(const Json& value) {
  return "| " + inCode(value["name"]) + " | " + inCell(value["about"]) + " |\n";
}

std::string functionRow(const Json& object, const Json& function) {
  const std::string name = object["name"];
  return "| " + inCode((name.empty() ? "" : name + '.') + signatureOf(function)) + " | " +
         inCell(function["about"]) + " |\n";
}

std::string functionTable(const std::vector<const Json*>& objects) {
  std::string text = "| | |\n| --- | --- |\n";
  for (const Json* object : objects) {
    for (const Json& function : (*object)["functions"]) text += functionRow(*object, function);
    for (const Json& value : (*object)["values"]) text += valueRow(value);
  }
  return text;
}

std::string details(const std::vector<const Json*>& objects) {
  std::string text;
  for (const Json* object : objects) {
    const std::string name = (*object)["name"];
    text +=
        (text.empty() ? "### " : "\n### ") + (name.empty() ? "Everywhere" : inCode(name)) + "\n";
    if (object->contains("grant"))
      text += "\nNeeds the access " + inCode((*object)["grant"]) + ".\n";
    for (const Json& function : (*object)["functions"]) text += "\n" + detailsOf(*object, function);
  }
  return text;
}

// In the order of the words.
std::vector<const Json*> objectsOf(const std::string& words) {
  std::vector<const Json*> found;
  std::istringstream names(words);
  for (std::string name; names >> name;) {
    for (const Json& object : apiTable()["objects"]) {
      const std::string own = object["name"];
      if (name == "*" || own == name || (own.empty() && name == "global")) found.push_back(&object);
    }
  }
  return found;
}

}  // namespace

std::string withReference(const std::string& document) {
  static const std::regex opening("<!-- (functions|details): (.*) -->\n");
  constexpr std::string_view kClosing = "<!-- end -->";
  std::string result;
  std::smatch found;
  std::string rest = document;
  while (std::regex_search(rest, found, opening)) {
    const std::string kind = found.str(1);
    const auto objects = objectsOf(found.str(2));
    result += found.prefix().str() + found.str(0) + "\n" +
              (kind == "details" ? details(objects) : functionTable(objects)) + "\n";
    const std::string behind = found.suffix();
    rest = behind.substr(std::min(behind.find(kClosing), behind.size()));
  }
  return result + rest;
}

std::string helpOn(const std::string& path) {
  for (const Json& object : apiTable()["objects"]) {
    for (const Json& function : object["functions"]) {
      if (pathOf(object, function) != path) continue;
      return function["about"].get<std::string>() + "\n\n" + detailsOf(object, function);
    }
  }
  return "";
}

}  // namespace morvik::devkit
