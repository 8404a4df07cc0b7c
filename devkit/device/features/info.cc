// Is the device there, and what is it: ping and the info query.
#include "device/exchange.h"
#include "device/features/features.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using zeph::ZephMsg;

void answerPing(const Exchange& exchange) { exchange.respond(zeph::OK); }

// One message only, without a response beside it: an application takes the first answer with infos
// and is done with the query.
void answerQuery(const Exchange& exchange) {
  ZephMsg answer;
  auto* infos = answer.mutable_morvikinfo_response();
  for (const auto& [key, value] : exchange.state().infos) {
    zeph::KeyValue* info = infos->add_infos();
    info->set_key(key);
    info->set_value(value);
  }
  exchange.reply(answer);
}

std::string ping(const ZephMsg& /*message*/) { return "ping"; }

std::string query(const ZephMsg& /*message*/) { return "info?"; }

std::string response(const ZephMsg& message) {
  std::string text = "info";
  for (const auto& info : message.morvikinfo_response().infos()) {
    text += ' ' + printable(info.key()) + "=\"" + printable(info.value()) + '"';
  }
  return text;
}

void show(const DeviceView& view, JsonObject& whole) {
  whole.list("infos");
  for (const auto& [key, value] : view.state.infos) {
    whole.added("infos").text("key", key).text("value", value);
  }
}

constexpr Command kCommands[] = {
    {ZephMsg::kPingFieldNumber, Command::Needs::kGrant, answerPing},
    {ZephMsg::kMorvikinfoQueryFieldNumber, Command::Needs::kGrant, answerQuery},
};
constexpr Words kWords[] = {
    {ZephMsg::kPingFieldNumber, ping},
    {ZephMsg::kMorvikinfoQueryFieldNumber, query},
    {ZephMsg::kMorvikinfoResponseFieldNumber, response},
};

}  // namespace

constinit const Feature kInfoFeature = {.commands = kCommands, .words = kWords, .show = show};

}  // namespace morvik::devkit
