// The picture taken, and written part by part.
#include "device/view.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "device/device.h"
#include "device/features/features.h"
#include "device/payload.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

void addKept(DeviceView& view, Store& store) {
  if (auto messages = store.messages()) {
    view.messages = std::move(*messages);
  } else {
    view.trouble = store.trouble();
  }
  if (auto contacts = store.contacts()) {
    view.contacts = std::move(*contacts);
  } else {
    view.trouble = store.trouble();
  }
  if (const auto credentials = store.credentials()) {
    view.credentials = namesOfFields(*credentials);
  } else {
    view.trouble = store.trouble();
  }
}

void showApplication(const Application& application, JsonObject shown) {
  shown.number("number", application.number).number("came", application.came.count());
  for (const Feature* feature : features()) {
    if (feature->showApplication != nullptr) feature->showApplication(application, shown);
  }
  for (const Doubt& doubt : application.doubts) show(doubt, shown.added("doubts"));
}

}  // namespace

DeviceView viewOf(const Device& device) {
  DeviceView view;
  view.time = device.now();
  view.state = device.state();
  view.applications = device.applications();
  view.works = device.works().all();
  view.faults = device.faults();
  addKept(view, device.store());
  return view;
}

const Underway* underwayIn(const DeviceView& view, Work work) {
  const auto found = std::ranges::find(view.works, work, &Underway::work);
  return found != view.works.end() ? &*found : nullptr;
}

std::string timeLeftOf(const DeviceView& view, const Underway& underway) {
  if (!underway.length) return "at rest";
  const auto left = underway.begun + *underway.length - view.time;
  return inMilliseconds(static_cast<int>(std::max<std::int64_t>(left.count(), 0))) + " more";
}

void show(const Underway& underway, JsonObject shown) {
  shown.text("work", nameOf(underway.work))
      .number("application", underway.application)
      .text("request", underway.request)
      .number("begun", underway.begun.count());
  if (underway.length) shown.number("length", underway.length->count());
}

void show(const Doubt& doubt, JsonObject shown) {
  shown.text("about", nameOf(doubt.about)).text("value", doubt.value).text("text", doubt.text);
}

Json toJson(const DeviceView& view) {
  Json json;
  JsonObject whole(json);
  whole.number("version", DeviceView::kVersion).number("time", view.time.count());
  whole.list("applications").list("work");
  for (const auto& [number, application] : view.applications) {
    showApplication(application, whole.added("applications"));
  }
  for (const Underway& underway : view.works) show(underway, whole.added("work"));
  for (const Feature* feature : features()) {
    if (feature->show != nullptr) feature->show(view, whole);
  }
  if (!view.trouble.empty()) whole.text("trouble", view.trouble);
  return json;
}

}  // namespace morvik::devkit
