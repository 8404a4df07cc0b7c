// Events member by member; messages by protobuf's own hand.
#include "device/event-json.h"

#include <glib.h>
#include <google/protobuf/util/json_util.h>

#include <nlohmann/json.hpp>

#include "device/describe.h"
#include "device/owned.h"
#include "device/secrets.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

// One for each kind of event: its name, and what it tells.

const char* add(JsonObject& shown, const Came& came) {
  shown.number("application", came.application);
  return "came";
}

const char* add(JsonObject& shown, const Left& left) {
  shown.number("application", left.application);
  return "left";
}

void addMessage(JsonObject& shown, AppNumber application, const zeph::ZephMsg& message) {
  shown.number("application", application)
      .member("message", toJson(message))
      .text("words", describe(message));
}

const char* add(JsonObject& shown, const Received& received) {
  addMessage(shown, received.application, *received.message);
  return "received";
}

const char* add(JsonObject& shown, const Sent& sent) {
  addMessage(shown, sent.application, *sent.message);
  if (!sent.together.empty()) shown.member("together", sent.together);
  return "sent";
}

const char* add(JsonObject& shown, const Changed& changed) {
  shown.text("part", changed.part);
  return "changed";
}

const char* add(JsonObject& shown, const Began& began) {
  show(began.underway, shown);
  return "began";
}

const char* add(JsonObject& shown, const Ended& ended) {
  show(ended.underway, shown);
  if (ended.code) shown.text("code", zeph::VReturnCode_Name(*ended.code));
  return "ended";
}

const char* add(JsonObject& shown, const Stimulated& stimulated) {
  shown.text("name", stimulated.name);
  if (stimulated.only) shown.number("application", *stimulated.only);
  JsonObject arguments = shown.object("arguments");
  for (const auto& [name, values] : stimulated.arguments) arguments.texts(name.c_str(), values);
  return "stimulus";
}

const char* add(JsonObject& shown, const Doubted& doubted) {
  shown.number("application", doubted.application);
  show(doubted.doubt, shown);
  return "doubt";
}

const char* add(JsonObject& shown, const Noted& noted) {
  shown.text("text", noted.text);
  return "note";
}

const char* add(JsonObject& shown, const Trouble& trouble) {
  if (trouble.application) shown.number("application", *trouble.application);
  shown.text("text", trouble.text);
  return "trouble";
}

}  // namespace

Json toJson(const Event& event) {
  Json json;
  JsonObject shown(json);
  shown.number("number", static_cast<std::int64_t>(event.number))
      .number("time", event.time.count())
      .text("event", "");
  shown.text("event", std::visit([&](const auto& what) { return add(shown, what); }, event.what));
  return json;
}

std::string lineOf(const Event& event) { return textOf(toJson(event)); }

// Texts that are no UTF-8 make no valid JSON, so what is wrong in them is replaced. A message that
// lacks required fields has no form that protobuf would write.
Json toJson(const zeph::ZephMsg& message) {
  Json bare{{"id", message.id()}};
  if (!message.IsInitialized()) return bare;
  google::protobuf::util::JsonPrintOptions options;
  options.preserve_proto_field_names = true;
  std::string text;
  const auto status =
      google::protobuf::util::MessageToJsonString(withoutSecrets(message), &text, options);
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  Json json = Json::parse(valid.get(), nullptr, /*allow_exceptions=*/false);
  return status.ok() && !json.is_discarded() ? json : bare;
}

}  // namespace morvik::devkit
