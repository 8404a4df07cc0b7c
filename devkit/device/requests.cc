// Lines told apart.
#include "device/requests.h"

#include <nlohmann/json.hpp>

#include "device/stimuli-json.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

Json answer(const Device& device, const char* event) {
  return {{"event", event}, {"time", device.now().count()}};
}

Json answer(const Device& device, const Outcome& outcome) {
  Json json = answer(device, "outcome");
  json.update(toJson(outcome));
  return json;
}

bool asksFor(const Json& request, const char* what) {
  return request.is_object() && request.size() == 1 && request.contains(what) &&
         request[what] == true;
}

Json answerToJson(Device& device, std::string_view text) {
  const Json request = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (request.is_discarded()) return answer(device, refused("the line is no JSON"));
  if (asksFor(request, "view")) {
    Json json = answer(device, "view");
    json["view"] = toJson(viewOf(device));
    return json;
  }
  if (asksFor(request, "stimuli")) {
    Json json = answer(device, "stimuli");
    json.update(stimuliJson());
    return json;
  }
  return answer(device, stimulateByName(device, request));
}

}  // namespace

std::string greeting(const Device& device, const char* host, int port) {
  return textOf({{"event", "listening"},
                 {"version", DeviceView::kVersion},
                 {"time", device.now().count()},
                 {"host", host},
                 {"port", port}});
}

std::string answerTo(Device& device, std::string_view line) {
  return textOf(line.starts_with('{') ? answerToJson(device, line)
                                      : answer(device, stimulate(device, line)));
}

}  // namespace morvik::devkit
