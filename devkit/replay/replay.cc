// Which recorded request a request is, and when what followed it comes.
#include "replay/replay.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "device/describe.h"
#include "device/event-json.h"
#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

constexpr std::size_t kBeginning = static_cast<std::size_t>(-1);

bool isGrantWanted(const zeph::ZephMsg& message) {
  return message.interactivemode().action() == zeph::InteractiveMode::START;
}

// Without what is new each time: the message's own id, and the interactive id, which an application
// makes up. That there is one counts.
Json comparable(const zeph::ZephMsg& message) {
  Json json = toJson(message);
  json.erase("id");
  if (json.contains("interactiveId")) json["interactiveId"] = "(id)";
  if (json.contains("interactiveMode") && json["interactiveMode"].contains("interactiveId")) {
    json["interactiveMode"]["interactiveId"] = "(id)";
  }
  return json;
}

std::string dotted(const std::string& pointer) {
  std::string path = pointer.substr(std::min<std::size_t>(pointer.size(), 1));
  std::ranges::replace(path, '/', '.');
  return path;
}

std::string shownValue(const Json& value) { return shortened(textOf(value)); }

// One operation of a JSON patch in words.
std::string changeInWords(const Json& change, const Json& recorded) {
  const std::string pointer = change["path"];
  const std::string name = dotted(pointer);
  if (change["op"] == "add")
    return name + ": " + shownValue(change["value"]) + " now, nothing in the recording";
  const std::string before = shownValue(recorded[Json::json_pointer(pointer)]);
  if (change["op"] == "remove") return name + ": " + before + " in the recording, nothing now";
  return name + ": " + before + " in the recording, " + shownValue(change["value"]) + " now";
}

std::string quoted(const zeph::ZephMsg& message) { return '"' + describe(message) + '"'; }

std::string rewritten(const std::string& id, const std::map<std::string, std::string>& ids) {
  const auto found = ids.find(id);
  return found != ids.end() ? found->second : id;
}

}  // namespace

std::string differenceOf(const zeph::ZephMsg& recorded, const zeph::ZephMsg& now) {
  const Json before = comparable(recorded);
  std::string words;
  for (const Json& change : Json::diff(before, comparable(now))) {
    words += (words.empty() ? "" : "; ") + changeInWords(change, before);
  }
  return words;
}

Replay::Replay(Recording recording, Outlet& outlet, Scheduler& scheduler)
    : recording_(std::move(recording)),
      outlet_(outlet),
      scheduler_(scheduler),
      events_([this] { return scheduler_.now(); }) {}

std::size_t Replay::untouched() const { return recording_.conversations.size() - taken_.size(); }

// One that hears something before it asks, and the last one, are known by their turn alone.
void Replay::applicationCame(AppNumber application) {
  const Events::Pause pause(events_);
  Part& part = parts_[application];
  part.came = now();
  events_.raise(Came{application});
  const Conversation* next = nullptr;
  for (const Conversation& one : recording_.conversations) {
    if (next == nullptr && std::ranges::find(taken_, &one) == taken_.end()) next = &one;
  }
  if (next == nullptr) {
    depart(application, "the recording has no further application: " +
                            std::to_string(recording_.conversations.size()) + " came in it");
    return;
  }
  const bool hearsFirst =
      !next->passed.empty() && next->passed.front().kind != Recorded::Kind::kRequest;
  if (hearsFirst || untouched() == 1) take(application, part, *next);
}

void Replay::take(AppNumber application, Part& part, const Conversation& conversation) {
  taken_.push_back(&conversation);
  part.conversation = &conversation;
  part.done.resize(conversation.passed.size());
  for (const Recorded& one : conversation.passed) {
    if (one.kind == Recorded::Kind::kRequest) part.requests.insert(one.message.id());
  }
  events_.raise(Noted{appName(application) + " plays " + appName(conversation.application) +
                      " of the recording, from line " + std::to_string(conversation.line)});
  anchor(application, part, kBeginning, "");
}

const Conversation* Replay::choose(const zeph::ZephMsg& request) const {
  const Conversation* first = nullptr;
  for (const Conversation& one : recording_.conversations) {
    if (std::ranges::find(taken_, &one) != taken_.end()) continue;
    if (first == nullptr) first = &one;
    const auto asked = std::ranges::find(one.passed, Recorded::Kind::kRequest, &Recorded::kind);
    if (asked != one.passed.end() && differenceOf(asked->message, request).empty()) return &one;
  }
  return first;
}

void Replay::receive(AppNumber application, zeph::ZephMsg request) {
  const Events::Pause pause(events_);
  const auto found = parts_.find(application);
  if (found == parts_.end()) return;
  const auto passed = std::make_shared<const zeph::ZephMsg>(std::move(request));
  events_.raise(Received{application, passed});
  Part& part = found->second;
  if (part.conversation == nullptr) {
    if (const auto* conversation = choose(*passed)) take(application, part, *conversation);
  }
  answer(application, part, *passed);
}

std::vector<std::size_t> Replay::openRequests(const Part& part) const {
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < part.done.size(); ++i) {
    const bool isRequest = part.conversation->passed[i].kind == Recorded::Kind::kRequest;
    if (isRequest && !part.done[i]) open.push_back(i);
  }
  return open;
}

void Replay::answer(AppNumber application, Part& part, const zeph::ZephMsg& request) {
  const std::vector<std::size_t> open = openRequests(part);
  const auto same = std::ranges::find_if(open, [&](std::size_t index) {
    return differenceOf(part.conversation->passed[index].message, request).empty();
  });
  if (same == open.end()) return refuse(application, part, request);
  if (same != open.begin()) {
    const Recorded& expected = part.conversation->passed[open.front()];
    const Recorded& asked = part.conversation->passed[*same];
    depart(application, "asks " + quoted(request) + " of line " + std::to_string(asked.line) +
                            " before " + quoted(expected.message) + " of line " +
                            std::to_string(expected.line));
  }
  matched(application, part, *same, request);
}

void Replay::matched(AppNumber application, Part& part, std::size_t index,
                     const zeph::ZephMsg& request) {
  const zeph::ZephMsg& recorded = part.conversation->passed[index].message;
  part.done[index] = true;
  part.asked[recorded.id()] = request.id();
  if (isGrantWanted(recorded)) {
    part.granted[recorded.interactivemode().interactiveid()] =
        request.interactivemode().interactiveid();
  }
  anchor(application, part, index, recorded.id());
  tellWhenThrough(application, part);
}

void Replay::refuse(AppNumber application, const Part& part, const zeph::ZephMsg& request) {
  const std::vector<std::size_t> open = openRequests(part);
  if (!open.empty()) {
    const Recorded& expected = part.conversation->passed[open.front()];
    depart(application, "asks " + quoted(request) + ", and line " + std::to_string(expected.line) +
                            " has " + quoted(expected.message) + ". " +
                            differenceOf(expected.message, request));
  } else if (part.conversation != nullptr) {
    depart(application, "asks " + quoted(request) + ", and asked nothing more in the recording");
  }
  zeph::ZephMsg message;
  message.set_correlationid(request.id());
  message.mutable_response()->set_code(zeph::ERROR);
  message.mutable_response()->set_description("this is not in the recording");
  send(application, std::move(message));
}

// What follows from a request that was asked now: its answers, and what nobody asked for between it
// and the next one. What belongs behind earlier requests that never came is not kept waiting.
void Replay::anchor(AppNumber application, Part& part, std::size_t request,
                    const std::string& recordedId) {
  const auto& passed = part.conversation->passed;
  const bool atBeginning = request == kBeginning;
  const Time begun = atBeginning ? part.conversation->came : passed[request].at;
  const Time late = atBeginning ? now() - part.came : Time(0);
  std::size_t before = kBeginning;
  for (std::size_t i = 0; i < passed.size(); ++i) {
    if (passed[i].kind == Recorded::Kind::kRequest) before = i;
    if (passed[i].kind == Recorded::Kind::kRequest || part.done[i]) continue;
    const std::string& answered = passed[i].message.correlationid();
    const Time delay = std::max(passed[i].at - begun - late, Time(0));
    if (part.requests.contains(answered)) {
      if (!atBeginning && answered == recordedId) schedule(application, part, i, delay);
    } else if (before == request) {
      schedule(application, part, i, delay);
    } else if (!atBeginning && (before == kBeginning || before < request)) {
      schedule(application, part, i, Time(0));
    }
  }
}

void Replay::schedule(AppNumber application, Part& part, std::size_t index, Time delay) {
  part.done[index] = true;
  scheduler_.after(delay, [this, application, index] {
    const Events::Pause pause(events_);
    happen(application, index);
  });
}

void Replay::happen(AppNumber application, std::size_t index) {
  const auto found = parts_.find(application);
  if (found == parts_.end()) return;
  Part& part = found->second;
  const Recorded& recorded = part.conversation->passed[index];
  if (recorded.kind == Recorded::Kind::kDrop) return outlet_.drop(application);
  zeph::ZephMsg message = recorded.message;
  if (message.has_correlationid()) {
    message.set_correlationid(rewritten(message.correlationid(), part.asked));
  }
  if (message.has_interactiveid()) {
    message.set_interactiveid(rewritten(message.interactiveid(), part.granted));
  }
  if (message.interactivemode().has_interactiveid()) {
    auto& mode = *message.mutable_interactivemode();
    mode.set_interactiveid(rewritten(mode.interactiveid(), part.granted));
  }
  send(application, std::move(message));
}

void Replay::send(AppNumber application, zeph::ZephMsg message) {
  message.set_id(GText(g_uuid_string_random()).get());
  const auto passed = std::make_shared<const zeph::ZephMsg>(std::move(message));
  events_.raise(Sent{application, passed});
  outlet_.send(application, *passed, {});
}

void Replay::tellWhenThrough(AppNumber application, Part& part) {
  if (part.told || !openRequests(part).empty()) return;
  part.told = true;
  events_.raise(Noted{appName(application) + " has asked all that was asked in the recording"});
}

void Replay::applicationLeft(AppNumber application, const std::string& trouble) {
  const Events::Pause pause(events_);
  const auto gone = parts_.extract(application);
  if (gone.empty()) return;
  if (!trouble.empty()) events_.raise(Trouble{application, trouble});
  tellUnasked(application, gone.mapped());
  events_.raise(Left{application});
}

void Replay::tellUnasked(AppNumber application, const Part& part) {
  const std::vector<std::size_t> open = openRequests(part);
  if (open.empty()) return;
  const Recorded& next = part.conversation->passed[open.front()];
  const std::size_t more = open.size() - 1;
  depart(application, "goes before it asks " + quoted(next.message) + " of line " +
                          std::to_string(next.line) +
                          (more > 0 ? " and " + std::to_string(more) + " more" : ""));
}

void Replay::depart(AppNumber application, const std::string& text) {
  ++departures_;
  events_.raise(Trouble{application, "leaves the recording: " + text});
}

}  // namespace morvik::devkit
