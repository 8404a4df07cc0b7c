// Lines told apart.
#include "device/requests.h"

#include <nlohmann/json.hpp>

#include "device/stimuli-json.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

Json answer(const RequestWays& ways, const char* event) {
  return {{"event", event}, {"time", ways.now().count()}};
}

Json answer(const RequestWays& ways, const Outcome& outcome) {
  Json json = answer(ways, "outcome");
  json.update(toJson(outcome));
  return json;
}

bool asksFor(const Json& request, const char* what) {
  return request.is_object() && request.size() == 1 && request.contains(what) &&
         request[what] == true;
}

Json answerToJson(const RequestWays& ways, std::string_view text) {
  const Json request = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (request.is_discarded()) return answer(ways, refused("the line is no JSON"));
  if (asksFor(request, "view")) {
    Json json = answer(ways, "view");
    json["view"] = toJson(ways.view());
    return json;
  }
  if (asksFor(request, "stimuli")) {
    Json json = answer(ways, "stimuli");
    json.update(stimuliJson());
    return json;
  }
  return answer(ways, ways.request(request));
}

}  // namespace

std::string greeting(const Device& device, const char* host, int port) {
  return textOf({{"event", "listening"},
                 {"version", DeviceView::kVersion},
                 {"time", device.now().count()},
                 {"host", host},
                 {"port", port}});
}

std::string answerTo(const RequestWays& ways, std::string_view line) {
  return textOf(line.starts_with('{') ? answerToJson(ways, line)
                                      : answer(ways, ways.stimulate(line)));
}

RequestWays waysTo(Device& device) {
  return {[&device] { return device.now(); }, [&device] { return viewOf(device); },
          [&device](std::string_view line) { return stimulate(device, line); },
          [&device](const Json& stimulus) { return stimulateByName(device, stimulus); }};
}

}  // namespace morvik::devkit
