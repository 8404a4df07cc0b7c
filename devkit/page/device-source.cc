// From the device's own forms to the page's.
#include "page/device-source.h"

#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

#include "device/event-json.h"
#include "device/stimuli-json.h"
#include "device/view.h"
#include "page/page.h"

namespace morvik::devkit {
namespace {

constexpr std::size_t kGoneThatAreShown = 5;

Json applicationJson(AppNumber number, const char* state, std::int64_t since, Json end) {
  return {{"name", "app " + std::to_string(number)},
          {"number", number},
          {"slot", number},
          {"state", state},
          {"since", since},
          {"autokill", nullptr},
          {"end", std::move(end)},
          {"findings", Json::array()},
          {"hints", Json::array()}};
}

// The work that goes on is part of the view, and told by events of its own.
bool changesTheView(const Event& event) {
  return std::holds_alternative<Changed>(event.what) || std::holds_alternative<Began>(event.what) ||
         std::holds_alternative<Ended>(event.what) || std::holds_alternative<Came>(event.what) ||
         std::holds_alternative<Left>(event.what);
}

bool changesTheApplications(const Event& event) {
  const auto* changed = std::get_if<Changed>(&event.what);
  return changed != nullptr
             ? changed->part == "applications"
             : std::holds_alternative<Came>(event.what) || std::holds_alternative<Left>(event.what);
}

}  // namespace

DeviceSource::DeviceSource(Device& device)
    : device_(device), observation_(device.events(), *this) {}

Json DeviceSource::view() const { return toJson(viewOf(device_)); }

Json DeviceSource::stimuli() const { return stimuliJson(); }

Json DeviceSource::applications() const {
  Json all = Json::array();
  for (const auto& [number, application] : device_.applications()) {
    const char* state = application.interactiveId.empty() ? "connected" : "interactive";
    all.push_back(applicationJson(number, state, application.came.count(), nullptr));
  }
  for (const Gone& gone : gone_) {
    Json end = {{"kind", "left"}, {"sentence", gone.why}, {"cure", ""}, {"lines", Json::array()}};
    all.push_back(applicationJson(gone.number, "ended", gone.since, std::move(end)));
  }
  return all;
}

Outcome DeviceSource::stimulate(const std::string& name, const Json& arguments,
                                std::optional<unsigned> app) {
  Json request = {{"stimulus", name}, {"arguments", arguments}};
  if (app) request["app"] = *app;
  return stimulateByName(device_, request);
}

Outcome DeviceSource::act(const PageAct& /*act*/) {
  return {false, "the device alone starts and ends no applications; morvik-dev run does"};
}

void DeviceSource::happened(const Event& event) {
  const auto* trouble = std::get_if<Trouble>(&event.what);
  if (trouble != nullptr && trouble->application) {
    troubles_[*trouble->application] = trouble->text;
  }
  const auto* left = std::get_if<Left>(&event.what);
  if (left == nullptr) return;
  const auto why = troubles_.extract(left->application);
  gone_.push_back({left->application, event.time.count(),
                   why.empty() ? "The connection ended." : why.mapped()});
  if (gone_.size() > kGoneThatAreShown) gone_.pop_front();
}

DeviceFeed::DeviceFeed(Device& device, Page& page)
    : page_(page), observation_(device.events(), *this) {}

void DeviceFeed::happened(const Event& event) {
  page_.happened(toJson(event));
  if (changesTheView(event)) page_.viewChanged();
  if (changesTheApplications(event)) page_.applicationsChanged();
}

std::string pageGreeting(const Device& device, const std::string& address) {
  return textOf({{"event", "page"}, {"time", device.now().count()}, {"address", address}});
}

}  // namespace morvik::devkit
