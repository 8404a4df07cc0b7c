// JSON in, one call out.
#include "page/page-requests.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

namespace morvik::devkit {
namespace {

constexpr std::size_t kLongestName = 200;  // bytes of a name that a page tells
constexpr std::size_t kLongestLaunchType = 1000;
constexpr std::size_t kMostTags = 200;
constexpr std::size_t kLongestTagText = 200;

// What a frame does not have or has in another form.
class Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

const Json* memberOf(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && !found->is_null() ? &*found : nullptr;
}

std::string textIn(const Json& request, const char* name, std::size_t longest) {
  const Json* member = memberOf(request, name);
  if (member == nullptr || !member->is_string()) {
    throw Refused(std::string("\"") + name + "\" must be a text");
  }
  auto text = member->get<std::string>();
  if (text.size() > longest) throw Refused(std::string("\"") + name + "\" is too long");
  return text;
}

// The device itself looks at names and values; here it only matters that they are few and flat.
bool isFlat(const Json& value, int levels) {
  if (!value.is_structured()) return !value.is_null();
  return levels > 0 && std::all_of(value.begin(), value.end(), [levels](const Json& inner) {
           return isFlat(inner, levels - 1);
         });
}

Json argumentsIn(const Json& request) {
  constexpr int kLevels = 2;  // a list of pairs
  const Json* arguments = memberOf(request, "arguments");
  if (arguments == nullptr) return Json::object();
  const auto isArgument = [](const Json& value) {
    return value.is_null() || isFlat(value, kLevels);
  };
  if (!arguments->is_object() || !std::all_of(arguments->begin(), arguments->end(), isArgument)) {
    throw Refused("\"arguments\" must be an object of texts, numbers and lists");
  }
  return *arguments;
}

std::optional<unsigned> applicationOf(const Json& request) {
  const Json* app = memberOf(request, "app");
  if (app == nullptr) return std::nullopt;
  if (!app->is_number_unsigned() || app->get<std::uint64_t>() > UINT32_MAX) {
    throw Refused("\"app\" must be the number of an application, or null");
  }
  return app->get<unsigned>();
}

Outcome takeStimulus(const Json& request, PageRequestTaker& taker) {
  const std::string name = textIn(request, "name", kLongestName);
  return taker.stimulate(name, argumentsIn(request), applicationOf(request));
}

// What stands in a launch line must not end it.
void mustBeOneLine(const std::string& text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; };
  if (std::any_of(text.begin(), text.end(), isControl)) throw Refused("texts must be one line");
}

bool isLaunchType(const std::string& text) {
  return text == "plain" || text.starts_with("RFID;") || text.starts_with("ASR;");
}

Outcome takeAct(const Json& request, PageRequestTaker& taker) {
  constexpr std::array<std::string_view, 3> kActions = {"restart", "launch", "stop"};
  PageAct act{textIn(request, "action", kLongestName), textIn(request, "app", kLongestName), ""};
  if (std::find(kActions.begin(), kActions.end(), act.action) == kActions.end()) {
    throw Refused("\"action\" must be restart, launch or stop");
  }
  if (act.action == "launch") {
    act.launchType = textIn(request, "launchType", kLongestLaunchType);
    if (!isLaunchType(act.launchType)) {
      throw Refused("\"launchType\" must be plain, RFID;... or ASR;...");
    }
  }
  mustBeOneLine(act.app + act.launchType);
  return taker.act(act);
}

bool isTag(const Json& tag) {
  const auto isShortText = [](const Json& value) {
    return value.is_string() && value.get_ref<const std::string&>().size() <= kLongestTagText;
  };
  return tag.is_object() && tag.size() <= 8 && std::all_of(tag.begin(), tag.end(), isShortText);
}

Outcome takeTags(const Json& request, PageRequestTaker& taker) {
  const Json* tags = memberOf(request, "tags");
  if (tags == nullptr || !tags->is_array() || tags->size() > kMostTags ||
      !std::all_of(tags->begin(), tags->end(), isTag)) {
    throw Refused("\"tags\" must be at most 200 objects of short texts");
  }
  return taker.saveTags(*tags);
}

void takeSeen(const Json& request, PageRequestTaker& taker) {
  const Json* number = memberOf(request, "seq");
  if (number == nullptr || !number->is_number_unsigned() ||
      !taker.seen(number->get<std::uint64_t>())) {
    throw Refused("\"seq\" must be the number of a frame that was sent");
  }
}

constexpr std::pair<std::string_view, Outcome (*)(const Json&, PageRequestTaker&)> kRequests[] = {
    {"stimulus", takeStimulus}, {"act", takeAct}, {"save-tags", takeTags}};

Outcome take(const Json& request, PageRequestTaker& taker) {
  const std::string type = textIn(request, "type", kLongestName);
  for (const auto& [name, takeIt] : kRequests) {
    if (name == type) return takeIt(request, taker);
  }
  throw Refused("there is no such type of request");
}

// How the page knows its request again: a number or a short text, as it came.
Json idOf(const Json& request) {
  const Json* id = memberOf(request, "id");
  const bool known =
      id != nullptr &&
      (id->is_number_integer() ||
       (id->is_string() && id->get_ref<const std::string&>().size() <= kLongestName));
  return known ? *id : Json();
}

Json outcomeOf(Json id, const Outcome& outcome) {
  return {
      {"type", "outcome"}, {"id", std::move(id)}, {"done", outcome.done}, {"text", outcome.text}};
}

}  // namespace

std::optional<Json> takeRequest(std::string_view frame, PageRequestTaker& taker) {
  const Json request = Json::parse(frame, nullptr, /*allow_exceptions=*/false);
  if (!request.is_object()) return outcomeOf({}, {false, "a frame must be one JSON object"});
  try {
    const Json* type = memberOf(request, "type");
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
