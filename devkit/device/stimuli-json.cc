// Requests read, and the table written.
#include "device/stimuli-json.h"

#include <nlohmann/json.hpp>

#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

constexpr const char* kGroups[] = {"body", "user", "around", "fault", "help"};
constexpr const char* kKinds[] = {"text", "id", "number", "choice", "name", "pair"};
constexpr const char* kFors[] = {"applications", "device"};

// As a word of a line; an object or a list has none.
std::optional<std::string> wordOf(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number() || value.is_boolean()) return value.dump();
  return std::nullopt;
}

// False when there is something that has no word.
bool addWords(const Json& value, std::vector<std::string>& words) {
  if (value.is_null()) return true;
  const auto word = wordOf(value);
  if (word) words.push_back(*word);
  if (word || !value.is_structured()) return word.has_value();
  for (const auto& [key, part] : value.items()) {
    const auto text = wordOf(part);
    if (!text) return false;
    words.push_back(value.is_object() ? key + '=' + *text : *text);
  }
  return true;
}

// The arguments by name; what is wrong with them in `trouble`.
Arguments::Given givenBy(const Json& request, std::string& trouble) {
  Arguments::Given given;
  const auto arguments = request.find("arguments");
  if (arguments == request.end() || arguments->is_null()) return given;
  if (!arguments->is_object()) {
    trouble = "\"arguments\" is an object";
    return given;
  }
  for (const auto& [name, value] : arguments->items()) {
    std::vector<std::string> words;
    if (!addWords(value, words)) trouble = "the argument " + cited(name) + " holds no plain values";
    if (!words.empty()) given[name] = words;
  }
  return given;
}

std::string strangerIn(const Json& request) {
  for (const auto& [name, value] : request.items()) {
    if (name != "stimulus" && name != "arguments" && name != "app") return name;
  }
  return "";
}

Json toJson(const Argument& row) {
  Json shown{{"name", row.name},
             {"label", whatOf(row)},
             {"kind", kKinds[static_cast<std::size_t>(row.kind)]},
             {"needed", row.needed},
             {"many", row.many}};
  if (row.choices != nullptr) shown["choices"] = row.choices();
  if (row.byDefault != nullptr) shown["default"] = row.byDefault;
  if (row.kind == Argument::Kind::kNumber) {
    shown["least"] = row.least;
    shown["most"] = row.most;
  }
  if (row.secret) shown["secret"] = true;
  return shown;
}

Json toJson(const Stimulus& stimulus) {
  const std::string usage = usageOf(stimulus);
  const std::size_t name = std::string_view(stimulus.name).size();
  Json shown{{"name", stimulus.name},
             {"group", kGroups[static_cast<std::size_t>(stimulus.group)]},
             {"for", kFors[static_cast<std::size_t>(stimulus.whom)]},
             {"usage", usage.size() > name ? usage.substr(name + 1) : ""},
             {"help", stimulus.help},
             {"arguments", Json::array()}};
  for (const Argument& row : stimulus.arguments) shown["arguments"].push_back(toJson(row));
  return shown;
}

}  // namespace

Outcome stimulateByName(Device& device, const Json& request) {
  if (!request.is_object() || !request.contains("stimulus") || !request["stimulus"].is_string()) {
    return refused("a stimulus is an object whose \"stimulus\" names it");
  }
  if (const std::string stranger = strangerIn(request); !stranger.empty()) {
    return refused(thereIsNo("member " + cited(stranger), {"stimulus", "arguments", "app"}));
  }
  std::optional<AppNumber> only;
  if (request.contains("app") && !request["app"].is_null()) {
    const std::string word = wordOf(request["app"]).value_or("");
    only = applicationCalled(device, word);
    if (!only) return refused(noApplication(device, word));
  }
  std::string trouble;
  const Arguments::Given given = givenBy(request, trouble);
  if (!trouble.empty()) return refused(trouble);
  return stimulateBy(device, only, request["stimulus"].get<std::string>(),
                     [&](Arguments& arguments) { arguments.fromNames(given); });
}

Json stimuliJson() {
  Json table{{"version", DeviceView::kVersion}, {"stimuli", Json::array()}};
  for (const Stimulus* stimulus : stimuli()) table["stimuli"].push_back(toJson(*stimulus));
  return table;
}

Json toJson(const Outcome& outcome) { return {{"done", outcome.done}, {"text", outcome.text}}; }

}  // namespace morvik::devkit
