// Objects of the table to interfaces and functions, entry by entry.
#include "api/typings.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>

#include "api/table.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

using Granted = std::optional<std::set<std::string>>;

constexpr const char* kHead =
    "// What a script of MorvikVM can call. Made by `morvik-dev types`, which replaces it.\n"
    "// There is no browser and no Node.js here: name this file in jsconfig.json.\n\n";

// Links of the reference lead nowhere from an editor.
std::string withoutLinks(std::string text) {
  for (std::size_t open = text.find('['); open != std::string::npos; open = text.find('[', open)) {
    const std::size_t middle = text.find("](", open);
    const std::size_t close = text.find(')', middle);
    if (middle == std::string::npos || close == std::string::npos) break;
    text.replace(open, close + 1 - open, text.substr(open + 1, middle - open - 1));
  }
  return text;
}

std::string comment(const std::string& indent, const std::string& text) {
  return text.empty() ? "" : indent + "/** " + withoutLinks(text) + " */\n";
}

std::string quoted(const Json& names) {
  std::string list;
  for (const Json& name : names) {
    list += (list.empty() ? "'" : " | '") + name.get<std::string>() + "'";
  }
  return list;
}

std::string typeAlias(const Json& type) {
  const std::string meaning =
      type.contains("is") ? type["is"].get<std::string>() : quoted(type["names"]);
  return comment("", type["about"]) + "type " + type["name"].get<std::string>() + " = " + meaning +
         ";\n";
}

std::string field(const Json& field) {
  return comment("  ", field.value("about", "")) + "  " +
         (field.value("readonly", false) ? "readonly " : "") + field["name"].get<std::string>() +
         (field.value("optional", false) ? "?" : "") + ": " + field["type"].get<std::string>() +
         ";\n";
}

std::string shape(const Json& shape) {
  std::string text =
      comment("", shape["about"]) + "interface " + shape["name"].get<std::string>() + " {\n";
  for (const Json& entry : shape["fields"]) text += field(entry);
  if (shape.value("open", false)) text += "  [name: string]: any;\n";
  return text + "}\n";
}

// A listener that has no way to give true is an error for the editor too.
std::string callbackType(const Json& callback) {
  std::string heard;
  for (const Json& value : callback["hears"]) {
    heard += (heard.empty() ? "" : ", ") + value["name"].get<std::string>() + ": " +
             value["type"].get<std::string>();
  }
  return "(" + heard + ") => ";
}

bool isListener(const Json& function) {
  return function["name"].get<std::string>().starts_with("addListener");
}

// TypeScript wants what may be left out to stand last, so a function behind such an argument makes
// a form of its own.
std::string parameters(const Json& function, bool withOptional, bool withCallback) {
  std::vector<std::string> list;
  for (const Json& argument : function["arguments"]) {
    const bool optional = argument.value("optional", false);
    if (optional && !withOptional) continue;
    const bool mayLack = optional && !withCallback;
    list.push_back(argument["name"].get<std::string>() + (mayLack ? "?: " : ": ") +
                   argument["type"].get<std::string>());
  }
  if (withCallback) {
    const Json& callback = function["callback"];
    const bool needed = callback.value("needed", false);
    list.push_back(std::string("fn") + (needed ? ": " : "?: ") + callbackType(callback) +
                   (isListener(function) ? "boolean" : "any"));
  }
  for (const Json& argument : function.value("after", Json::array())) {
    list.push_back(argument["name"].get<std::string>() +
                   "?: " + argument["type"].get<std::string>());
  }
  std::string text;
  for (const std::string& one : list) text += (text.empty() ? "" : ", ") + one;
  return text;
}

// An argument whose kind the host tests cannot be left out in front of a function.
bool mayComeEarly(const Json& function) {
  return std::ranges::any_of(function["arguments"], [](const Json& argument) {
    return argument.value("optional", false) && !argument.value("strict", false);
  });
}

bool hasOptional(const Json& function) {
  return std::ranges::any_of(function["arguments"], [](const Json& argument) {
    return argument.value("optional", false);
  });
}

std::string form(const Json& function, const std::string& opening, bool withOptional,
                 bool withCallback) {
  return opening + function["name"].get<std::string>() + "(" +
         parameters(function, withOptional, withCallback) +
         "): " + function.value("returns", "void") + ";\n";
}

std::string declaration(const Json& function, const std::string& opening) {
  const std::string indent = opening.substr(0, opening.find_first_not_of(' '));
  const std::string about = comment(indent, function["about"]);
  if (!function.contains("callback")) return about + form(function, opening, true, false);
  const std::string whole = form(function, opening, true, true);
  if (!hasOptional(function)) return about + whole;
  const std::string early = mayComeEarly(function) ? form(function, opening, false, true) : "";
  return about + form(function, opening, true, false) + early + whole;
}

bool isThere(const Json& object, const Granted& granted) {
  return !granted || !object.contains("grant") || granted->contains(object["grant"]);
}

std::string parentOf(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos ? "" : name.substr(0, dot);
}

std::string lastOf(const std::string& name) { return name.substr(name.rfind('.') + 1); }

std::string members(const Json& object, const std::string& opening) {
  std::string text;
  const bool global = object["name"].get<std::string>().empty();
  for (const Json& value : object["values"]) {
    text += comment(global ? "" : "  ", value["about"]) +
            (global ? "declare var " : "  readonly ") + value["name"].get<std::string>() + ": " +
            value["type"].get<std::string>() + ";\n";
  }
  for (const Json& function : object["functions"]) text += declaration(function, opening);
  return text;
}

// An object that comes later may be missing for ever.
std::string children(const std::string& parent, const Granted& granted) {
  std::string text;
  for (const Json& object : apiTable()["objects"]) {
    const std::string name = object["name"];
    if (name.empty() || parentOf(name) != parent || !isThere(object, granted)) continue;
    text += comment("  ", object["about"]) + "  readonly " + lastOf(name) +
            (object.value("later", false) ? "?: " : ": ") + "Morvik." + lastOf(name) + "Object;\n";
  }
  return text;
}

std::string interfaceOf(const Json& object, const Granted& granted) {
  const std::string name = object["name"];
  return "interface " + lastOf(name) + "Object {\n" + children(name, granted) +
         members(object, "  ") + "}\n";
}

std::string indented(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    result += "  " + text.substr(at, end - at) + "\n";
    at = end + 1;
  }
  return result;
}

// Outside of the namespace its names are qualified. Comments stay as they are.
std::string qualified(const std::string& text) {
  std::string pattern;
  for (const char* kind : {"types", "shapes"}) {
    for (const Json& entry : apiTable()[kind]) {
      pattern += (pattern.empty() ? "" : "|") + entry["name"].get<std::string>();
    }
  }
  const std::regex name(R"((\w: |\): |=> )()" + pattern + R"()\b)");
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    result += line.starts_with("/**") ? line : std::regex_replace(line, name, "$1Morvik.$2");
    result += '\n';
  }
  return result;
}

std::string namedTypes() {
  std::string text;
  for (const Json& type : apiTable()["types"]) text += typeAlias(type);
  for (const Json& entry : apiTable()["shapes"]) text += shape(entry);
  return text;
}

}  // namespace

std::string typings(const Granted& granted) {
  std::string inner = namedTypes();
  std::string globals;
  for (const Json& object : apiTable()["objects"]) {
    const std::string name = object["name"];
    if (!isThere(object, granted)) continue;
    if (!name.empty()) inner += interfaceOf(object, granted);
    if (name.empty()) globals += members(object, "declare function ");
    if (name.empty() || !parentOf(name).empty()) continue;
    globals += comment("", object["about"]);
    globals.append("declare var ")
        .append(name)
        .append(": Morvik.")
        .append(name)
        .append("Object;\n");
  }
  std::string text = std::string(kHead) + "declare namespace Morvik {\n";
  text += indented(inner);
  text += "}\n\n";
  return text + qualified(globals);
}

}  // namespace morvik::devkit
