// JSON in, one call out.
#include "page/page-requests.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

namespace morvik::devkit {
namespace {

using nlohmann::json;

constexpr std::size_t kLongestName = 200;  // bytes of a name that a page tells
constexpr std::size_t kLongestLaunchType = 1000;
constexpr std::size_t kMostTags = 200;
constexpr std::size_t kLongestTagText = 200;

// What a frame does not have or has in another form.
class Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

const json* memberOf(const json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && !found->is_null() ? &*found : nullptr;
}

std::string textOf(const json& request, const char* name, std::size_t longest) {
  const json* member = memberOf(request, name);
  if (member == nullptr || !member->is_string()) {
    throw Refused(std::string("\"") + name + "\" must be a text");
  }
  auto text = member->get<std::string>();
  if (text.size() > longest) throw Refused(std::string("\"") + name + "\" is too long");
  return text;
}

bool isScalar(const json& value) {
  return value.is_string() || value.is_number() || value.is_boolean();
}

json argumentsOf(const json& request) {
  const json* arguments = memberOf(request, "arguments");
  if (arguments == nullptr) return json::object();
  if (!arguments->is_object() || !std::all_of(arguments->begin(), arguments->end(), isScalar)) {
    throw Refused("\"arguments\" must be an object of texts, numbers and truth values");
  }
  return *arguments;
}

std::optional<unsigned> applicationOf(const json& request) {
  const json* app = memberOf(request, "app");
  if (app == nullptr) return std::nullopt;
  if (!app->is_number_unsigned() || app->get<std::uint64_t>() > UINT32_MAX) {
    throw Refused("\"app\" must be the number of an application, or null");
  }
  return app->get<unsigned>();
}

PageOutcome takeStimulus(const json& request, PageRequestTaker& taker) {
  const std::string name = textOf(request, "name", kLongestName);
  return taker.stimulate(name, argumentsOf(request), applicationOf(request));
}

// What stands in a launch line must not end it.
void mustBeOneLine(const std::string& text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; };
  if (std::any_of(text.begin(), text.end(), isControl)) throw Refused("texts must be one line");
}

bool isLaunchType(const std::string& text) {
  return text == "plain" || text.starts_with("RFID;") || text.starts_with("ASR;");
}

PageOutcome takeAct(const json& request, PageRequestTaker& taker) {
  constexpr std::array<std::string_view, 3> kActions = {"restart", "launch", "stop"};
  PageAct act{textOf(request, "action", kLongestName), textOf(request, "app", kLongestName), ""};
  if (std::find(kActions.begin(), kActions.end(), act.action) == kActions.end()) {
    throw Refused("\"action\" must be restart, launch or stop");
  }
  if (act.action == "launch") {
    act.launchType = textOf(request, "launchType", kLongestLaunchType);
    if (!isLaunchType(act.launchType)) {
      throw Refused("\"launchType\" must be plain, RFID;... or ASR;...");
    }
  }
  mustBeOneLine(act.app + act.launchType);
  return taker.act(act);
}

bool isTag(const json& tag) {
  const auto isShortText = [](const json& value) {
    return value.is_string() && value.get_ref<const std::string&>().size() <= kLongestTagText;
  };
  return tag.is_object() && tag.size() <= 8 && std::all_of(tag.begin(), tag.end(), isShortText);
}

PageOutcome takeTags(const json& request, PageRequestTaker& taker) {
  const json* tags = memberOf(request, "tags");
  if (tags == nullptr || !tags->is_array() || tags->size() > kMostTags ||
      !std::all_of(tags->begin(), tags->end(), isTag)) {
    throw Refused("\"tags\" must be at most 200 objects of short texts");
  }
  return taker.saveTags(*tags);
}

void takeSeen(const json& request, PageRequestTaker& taker) {
  const json* number = memberOf(request, "seq");
  if (number == nullptr || !number->is_number_unsigned() ||
      !taker.seen(number->get<std::uint64_t>())) {
    throw Refused("\"seq\" must be the number of a frame that was sent");
  }
}

constexpr std::pair<std::string_view, PageOutcome (*)(const json&, PageRequestTaker&)> kRequests[] =
    {{"stimulus", takeStimulus}, {"act", takeAct}, {"save-tags", takeTags}};

PageOutcome take(const json& request, PageRequestTaker& taker) {
  const std::string type = textOf(request, "type", kLongestName);
  for (const auto& [name, takeIt] : kRequests) {
    if (name == type) return takeIt(request, taker);
  }
  throw Refused("there is no such type of request");
}

// How the page knows its request again: a number or a short text, as it came.
json idOf(const json& request) {
  const json* id = memberOf(request, "id");
  const bool known =
      id != nullptr &&
      (id->is_number_integer() ||
       (id->is_string() && id->get_ref<const std::string&>().size() <= kLongestName));
  return known ? *id : json();
}

json outcomeOf(json id, const PageOutcome& outcome) {
  return {
      {"type", "outcome"}, {"id", std::move(id)}, {"done", outcome.done}, {"text", outcome.text}};
}

}  // namespace

std::optional<json> takeRequest(std::string_view frame, PageRequestTaker& taker) {
  const json request = json::parse(frame, nullptr, /*allow_exceptions=*/false);
  if (!request.is_object()) return outcomeOf({}, {false, "a frame must be one JSON object"});
  try {
    const json* type = memberOf(request, "type");
    if (type != nullptr && *type == "seen") {
      takeSeen(request, taker);
      return std::nullopt;
    }
    return outcomeOf(idOf(request), take(request, taker));
  } catch (const Refused& refused) {
    return outcomeOf(idOf(request), {false, refused.what()});
  }
}

}  // namespace morvik::devkit
