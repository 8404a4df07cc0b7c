// Messages in words: one function for each payload that has words of its own, and a table of them.
#include "device/describe.h"

#include <algorithm>
#include <iterator>

#include "device/owned.h"
#include "device/payload.h"
#include "device/social.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
using zeph::ZephMsg;

// In characters; more tells a reader nothing.
constexpr glong kLongestText = 200;
constexpr glong kLongestWord = 40;

std::string cut(const std::string& text, glong length) {
  if (g_utf8_strlen(text.c_str(), -1) <= length) return text;
  const char* end = g_utf8_offset_to_pointer(text.c_str(), length);
  return text.substr(0, static_cast<std::size_t>(end - text.c_str())) + " ...";
}

std::string ms(int period) { return std::to_string(period) + " ms"; }

std::string quotedIfAny(const std::string& text) {
  return text.empty() ? "" : " \"" + printable(text) + '"';
}

std::string interactiveMode(const ZephMsg& message) {
  const auto& mode = message.interactivemode();
  const std::string action =
      mode.has_action() ? zeph::InteractiveMode::Action_Name(mode.action()) : "without an action";
  return "interactive mode " + action +
         (mode.has_interactiveid() ? ' ' + printable(mode.interactiveid()) : "");
}

std::string led(const ZephMsg& message) {
  const auto& led = message.led();
  if (led.has_pulse()) {
    return "led pulse " + printable(led.pulse().color()) + ' ' + ms(led.pulse().period()) + " x " +
           std::to_string(led.pulse().pulse());
  }
  if (led.has_fade()) {
    return "led fade " + printable(led.fade().color()) + ' ' + ms(led.fade().period());
  }
  return "led light " + printable(led.light().color());
}

std::string messages(const ZephMsg& message) {
  const int count = message.morvikmessageresponse().morvikmessagelist_size();
  return std::to_string(count) + (count == 1 ? " message" : " messages");
}

std::string messageQuery(const ZephMsg& message) {
  const auto& query = message.morvikmessagequery();
  std::string text = "messages " + zeph::MorvikMessageQuery::TypeAction_Name(query.action());
  for (const std::string& id : query.id()) text += ' ' + printable(id);
  if (!query.has_message()) return text;
  return text + " to " + printable(query.message().header().to().uuid()) +
         quotedIfAny(query.message().content().content());
}

std::string contactQuery(const ZephMsg& /*message*/) { return "contacts?"; }

std::string socialQuery(const ZephMsg& /*message*/) { return "credentials?"; }

std::string social(const ZephMsg& message) {
  return "credentials " + credentialNames(message.social());
}

std::string response(const ZephMsg& message) {
  const auto& response = message.response();
  return "response " + (response.has_code() ? zeph::VReturnCode_Name(response.code()) : "") +
         quotedIfAny(response.description()) +
         (message.has_morvikmessageresponse() ? ", " + messages(message) : "");
}

std::string event(const ZephMsg& message) {
  const auto& event = message.event();
  return "event " + zeph::VReturnCode_Name(event.code()) + quotedIfAny(event.description());
}

std::string ping(const ZephMsg& /*message*/) { return "ping"; }

std::string infoQuery(const ZephMsg& /*message*/) { return "info?"; }

std::string infoResponse(const ZephMsg& message) {
  std::string text = "info";
  for (const auto& info : message.morvikinfo_response().infos()) {
    text += ' ' + printable(info.key()) + "=\"" + printable(info.value()) + '"';
  }
  return text;
}

struct Words {
  int field;
  std::string (*of)(const ZephMsg& message);
};

constexpr Words kWords[] = {
    {ZephMsg::kInteractiveModeFieldNumber, interactiveMode},
    {ZephMsg::kLedFieldNumber, led},
    {ZephMsg::kResponseFieldNumber, response},
    {ZephMsg::kEventFieldNumber, event},
    {ZephMsg::kPingFieldNumber, ping},
    {ZephMsg::kMorvikinfoQueryFieldNumber, infoQuery},
    {ZephMsg::kMorvikinfoResponseFieldNumber, infoResponse},
    {ZephMsg::kMorvikMessageQueryFieldNumber, messageQuery},
    {ZephMsg::kMorvikMessageResponseFieldNumber, messages},
    {ZephMsg::kGetcontactListFieldNumber, contactQuery},
    {ZephMsg::kSocialQueryFieldNumber, socialQuery},
    {ZephMsg::kSocialFieldNumber, social},
};

// The payload alone: the envelope's ids would drown it. Credentials are never shown, wherever a
// message carries them.
std::string fieldByField(const ZephMsg& message) {
  ZephMsg payload(message);
  payload.clear_id();
  payload.clear_correlationid();
  payload.clear_interactiveid();
  payload.clear_social();
  if (payload.has_config()) payload.mutable_config()->clear_social();
  const std::string text = payload.ShortDebugString();
  return text.empty() ? "a message that asks for nothing" : printable(text);
}

std::string inWords(const ZephMsg& message) {
  const auto* payload = payloadOf(message);
  const int field = payload != nullptr ? payload->number() : 0;
  const auto* words = std::find_if(std::begin(kWords), std::end(kWords),
                                   [field](const Words& w) { return w.field == field; });
  return words != std::end(kWords) ? words->of(message) : fieldByField(message);
}

}  // namespace

std::string printable(std::string_view text) {
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  std::string line;
  const char* at = valid.get();
  while (*at != '\0') {
    const char* next = g_utf8_next_char(at);
    const bool visible = g_unichar_isprint(g_utf8_get_char(at)) != FALSE;
    line.append(visible ? std::string_view(at, static_cast<std::size_t>(next - at)) : "?");
    at = next;
  }
  return line;
}

std::string shortened(std::string_view text) { return cut(printable(text), kLongestText); }

std::string cited(const std::string& word) {
  return word.empty() ? "\"\"" : cut(printable(word), kLongestWord);
}

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + cited(name);
  return list.empty() ? "none" : list;
}

std::string appName(AppNumber application) { return "app " + std::to_string(application); }

std::string describe(const ZephMsg& message) { return cut(inWords(message), kLongestText); }

}  // namespace morvik::devkit
