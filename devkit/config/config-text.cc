// Both forms by the protobuf library; this adds the places and the cures.
#include "config/config-text.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/util/json_util.h>

#include <algorithm>
#include <optional>
#include <regex>

#include "config/json-places.h"
#include "device/message-json.h"
#include "device/nearest.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
namespace protobuf = google::protobuf;
using protobuf::TextFormat;
using Tree = TextFormat::ParseInfoTree;

constexpr const char* kTextCure =
    "A field is written name: \"value\", a group of fields name { ... }, and # begins a comment.";

FolderTrouble configFinding(const std::string& file, const char* kind, std::string text,
                            std::string cure) {
  return {.file = file, .text = std::move(text), .kind = kind, .cure = std::move(cure)};
}

// "configInstance[2].params[0].key" as names and indices; an index of -1 for none.
struct PathStep {
  std::string name;
  int index = -1;
};

std::vector<PathStep> stepsOf(const std::string& path) {
  static const std::regex step(R"((\w+)(?:\[(\d+)\])?)");
  std::vector<PathStep> steps;
  for (std::sregex_iterator found(path.begin(), path.end(), step), end; found != end; ++found) {
    steps.push_back({found->str(1), (*found)[2].matched ? std::stoi(found->str(2)) : -1});
  }
  return steps;
}

// The message that holds the last of the steps.
const protobuf::Descriptor* holderOf(const std::vector<PathStep>& steps) {
  const auto* message = zeph::ConfigApp::descriptor();
  for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
    message = message->FindFieldByName(steps[i].name)->message_type();
  }
  return message;
}

std::string fieldCure(const std::string& name, const protobuf::Descriptor& message) {
  const auto fields = fieldsOf(message);
  if (const auto near = nearest(name, fields)) return "Write " + *near + ".";
  std::string all;
  for (const std::string& field : fields) all += (all.empty() ? "" : ", ") + field;
  return message.name() + " has the fields " + all + ".";
}

// What protobuf says, in fewer words where it is about a field's name.
void explain(const std::string& said, FolderTrouble& finding) {
  static const std::regex unknown("Message type \"([\\w.]+)\" has no field named \"(\\w+)\".*");
  std::smatch parts;
  if (!std::regex_match(said, parts, unknown)) return;
  const auto* message =
      zeph::ConfigApp::descriptor()->file()->pool()->FindMessageTypeByName(parts.str(1));
  if (message == nullptr) return;
  finding.kind = "config-field";
  finding.text = message->name() + " has no field " + parts.str(2);
  finding.cure = fieldCure(parts.str(2), *message);
}

std::string withoutStop(std::string text) {
  while (text.ends_with('.') || text.ends_with('\n')) text.pop_back();
  return text;
}

class TextErrors : public protobuf::io::ErrorCollector {
 public:
  TextErrors(const std::string& file, const std::string& text, std::vector<FolderTrouble>& findings)
      : file_(file), text_(text), findings_(findings) {}

  void AddError(int line, protobuf::io::ColumnNumber column, const std::string& message) override {
    FolderTrouble finding = configFinding(file_, "config-syntax", withoutStop(message), kTextCure);
    if (line >= 0) placeAt(text_, offsetOf(text_, line, column), finding);
    explain(message, finding);
    findings_.push_back(std::move(finding));
  }

 private:
  const std::string& file_;
  const std::string& text_;
  std::vector<FolderTrouble>& findings_;
};

// Where the message begins that lacks a field; nothing for the file as a whole.
std::optional<std::size_t> holderInText(const std::string& text, const Tree& root,
                                        const std::vector<PathStep>& steps) {
  const Tree* tree = &root;
  const auto* message = zeph::ConfigApp::descriptor();
  std::optional<std::size_t> offset;
  for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
    const auto* field = message->FindFieldByName(steps[i].name);
    const auto place = tree->GetLocation(field, steps[i].index);
    offset = offsetOf(text, place.line, place.column);
    tree = tree->GetTreeForNested(field, steps[i].index);
    message = field->message_type();
    if (tree == nullptr) break;
  }
  return offset;
}

std::string missingCure(const std::string& field, ConfigForm form) {
  return form == ConfigForm::kText ? "Add " + field + ": \"...\"."
                                   : "Add \"" + field + "\": \"...\".";
}

// `placeOf` gives the byte where the message with these steps begins.
template <class PlaceOf>
void tellMissing(const std::string& file, const std::string& text, ConfigForm form, PlaceOf placeOf,
                 ConfigRead& read) {
  std::vector<std::string> missing;
  read.config.FindInitializationErrors(&missing);
  for (const std::string& path : missing) {
    const auto steps = stepsOf(path);
    FolderTrouble finding =
        configFinding(file, "config-incomplete",
                      holderOf(steps)->name() + " lacks the required field " + steps.back().name,
                      missingCure(steps.back().name, form));
    placeAt(text, placeOf(path, steps).value_or(0), finding);
    read.findings.push_back(std::move(finding));
  }
}

ConfigRead readTextForm(const std::string& file, const std::string& text) {
  ConfigRead read;
  TextErrors errors(file, text, read.findings);
  Tree tree;
  TextFormat::Parser parser;
  parser.RecordErrorsTo(&errors);
  parser.WriteLocationsTo(&tree);
  parser.AllowPartialMessage(true);
  if (!parser.ParseFromString(text, &read.config)) return read;
  tellMissing(
      file, text, ConfigForm::kText,
      [&](const std::string& /*path*/, const auto& steps) {
        return holderInText(text, tree, steps);
      },
      read);
  return read;
}

// protobuf's words, such as "(configInstance[0]) nam: Cannot find field", have no place, and some
// have no path.
FolderTrouble jsonFinding(const std::string& file, const std::string& text,
                          const JsonPlaces& places, const std::string& said) {
  FolderTrouble finding = configFinding(file, "config-syntax", withoutStop(said),
                                        "The fields are those of ConfigApp in "
                                        "proto/zeph-message.proto; their values stand in quotes.");
  static const std::regex named(
      R"((?:\(([\w.\[\]]*)\))?:? ?(?:invalid name )?(\w+): Cannot find field\.?)");
  static const std::regex valued(R"(\(?([\w.\[\]]+)\)?: (.*))");
  std::smatch parts;
  std::string path;
  if (std::regex_match(said, parts, named)) {
    path = parts.str(1).empty() ? parts.str(2) : parts.str(1) + '.' + parts.str(2);
    const auto* message = holderOf(stepsOf(path));
    finding.kind = "config-field";
    finding.text = message->name() + " has no field " + parts.str(2);
    finding.cure = fieldCure(parts.str(2), *message);
  } else if (std::regex_match(said, parts, valued)) {
    path = parts.str(1);
  }
  placeAt(text, places.of(path).value_or(0), finding);
  return finding;
}

ConfigRead readJsonForm(const std::string& file, const std::string& text) {
  ConfigRead read;
  const JsonPlaces places(text);
  if (places.error()) {
    FolderTrouble finding = configFinding(
        file, "config-syntax", places.error()->text,
        "JSON has names and texts in \"quotes\", commas between members and no comments.");
    placeAt(text, places.error()->offset, finding);
    read.findings.push_back(std::move(finding));
    return read;
  }
  if (const auto trouble = readJson(text, read.config)) {
    read.findings.push_back(jsonFinding(file, text, places, *trouble));
    return read;
  }
  tellMissing(
      file, text, ConfigForm::kJson,
      [&](const std::string& path, const auto& /*steps*/) {
        const std::size_t dot = path.rfind('.');
        return places.of(dot == std::string::npos ? "" : path.substr(0, dot));
      },
      read);
  return read;
}

std::string asJsonForm(const zeph::ConfigApp& config) {
  protobuf::util::JsonPrintOptions options;
  options.add_whitespace = true;
  options.preserve_proto_field_names = true;
  std::string text;
  [[maybe_unused]] const auto status = protobuf::util::MessageToJsonString(config, &text, options);
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  return valid.get();
}

}  // namespace

ConfigForm formOf(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string::npos && text[first] == '{' ? ConfigForm::kJson : ConfigForm::kText;
}

ConfigRead readConfigText(const std::string& file, const std::string& text) {
  return formOf(text) == ConfigForm::kJson ? readJsonForm(file, text) : readTextForm(file, text);
}

std::string configAsText(const zeph::ConfigApp& config, ConfigForm form) {
  if (form == ConfigForm::kJson) return asJsonForm(config);
  TextFormat::Printer printer;
  printer.SetUseUtf8StringEscaping(true);
  printer.SetPrintMessageFieldsInIndexOrder(false);
  std::string text;
  printer.SetHideUnknownFields(true);
  printer.PrintToString(config, &text);
  return text;
}

void placeAt(const std::string& text, std::size_t offset, FolderTrouble& finding) {
  const std::string_view before = std::string_view(text).substr(0, offset);
  finding.line = 1 + static_cast<int>(std::ranges::count(before, '\n'));
  finding.column = 1 + static_cast<int>(before.size() - (before.rfind('\n') + 1));
}

std::size_t offsetOf(const std::string& text, int line, int column) {
  constexpr int kTab = 8;
  std::size_t at = 0;
  for (int passed = 0; passed < line && at < text.size(); ++passed) {
    at = std::min(text.find('\n', at), text.size() - 1) + 1;
  }
  for (int now = 0; now < column && at < text.size(); ++at) {
    now += text[at] == '\t' ? kTab - now % kTab : 1;
  }
  return at;
}

std::vector<std::string> fieldsOf(const protobuf::Descriptor& message) {
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(message.field_count()));
  for (int i = 0; i < message.field_count(); ++i) names.push_back(message.field(i)->name());
  return names;
}

}  // namespace morvik::devkit
