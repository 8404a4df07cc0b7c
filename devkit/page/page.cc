// What all open pages have in common: the history, and one writing of each frame for all of them.
#include "page/page.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace morvik::devkit {
namespace {

constexpr int kProtocolVersion = 1;
// The page's own reason for an end, from the numbers that are free for that.
constexpr unsigned short kTooManyPages = 4000;
// What a page that opens is told of the past.
constexpr std::size_t kMostPast = 1000;
constexpr std::size_t kMostPastBytes = std::size_t{512} * 1024;
// A picture that changes more often than this looks no smoother.
constexpr std::chrono::milliseconds kViewPace{30};
// Lines that come in one go are told in one frame, of this many at most.
constexpr std::size_t kMostLinesInOneFrame = 200;

// A frame's members without the braces around them.
std::string bodyFrom(const Json& frame) {
  std::string text = textOf(frame);
  return text.substr(1, text.size() - 2);
}

// The same, with a member whose value is written already.
std::string bodyFrom(const Json& frame, const char* name, const std::string& value) {
  return bodyFrom(frame) + ",\"" + name + "\":" + value;
}

}  // namespace

// One page that is open, and its socket.
struct Page::Guest {
  Guest(PageSocket::Owner& owner, PageSocket::Number number, SoupWebsocketConnection* connection)
      : socket(owner, number, connection),
        visitor([this](const std::string& frame) { socket.send(frame); }) {}

  PageSocket socket;
  Visitor visitor;
  bool isLeaving = false;  // nothing more is done for it
};

// Answers the requests of one page.
class Page::Desk : public PageRequestTaker {
 public:
  Desk(Page& page, Visitor& visitor) : page_(page), visitor_(visitor) {}

  bool seen(std::uint64_t number) override { return visitor_.acknowledge(number); }
  Outcome stimulate(const std::string& name, const Json& arguments,
                    std::optional<unsigned> app) override {
    return page_.source_.stimulate(name, arguments, app);
  }
  Outcome act(const PageAct& act) override { return page_.source_.act(act); }
  Outcome saveTags(const Json& tags) override {
    Outcome outcome = page_.tags_.save(tags);
    if (outcome.done) page_.owe(Visitor::Part::kTags);
    return outcome;
  }

 private:
  Page& page_;
  Visitor& visitor_;
};

Page::Page(PageSource& source, const std::string& stateFolder)
    : source_(source),
      tags_(stateFolder),
      events_(kMostPast, kMostPastBytes),
      log_(kMostPast, kMostPastBytes),
      soon_(kViewPace, [this] { catchUp(); }),
      server_([this](SoupWebsocketConnection* connection) { welcome(connection); }) {}

Page::~Page() = default;

void Page::viewChanged() { owe(Visitor::Part::kView); }

void Page::applicationsChanged() { owe(Visitor::Part::kApplications); }

void Page::owe(Visitor::Part part) {
  for (const auto& [number, guest] : guests_) guest->visitor.owe(part);
  if (!guests_.empty()) soon_.ask();
}

void Page::happened(const Json& event) {
  std::string text = textOf(event);
  if (!guests_.empty()) {
    const std::string body = bodyFrom({{"type", "event"}, {"now", source_.now()}}, "event", text);
    for (const auto& [number, guest] : guests_) guest->visitor.tellEvent(body);
  }
  events_.add(std::move(text));
}

void Page::logged(const PageLogLine& line) {
  std::string text = textOf({{"time", line.time},
                             {"app", line.app},
                             {"level", line.level},
                             {"kind", line.kind},
                             {"text", line.text}});
  if (!guests_.empty()) freshLog_.push_back(text);
  log_.add(std::move(text), line.isFaint());
  if (freshLog_.size() >= kMostLinesInOneFrame) return tellLog();
  if (!freshLog_.empty()) soon_.ask();
}

void Page::tellLog() {
  if (freshLog_.empty()) return;
  std::string lines;
  for (const std::string& line : freshLog_) lines += (lines.empty() ? "" : ",") + line;
  const std::string body =
      bodyFrom({{"type", "log"}, {"now", source_.now()}}, "lines", "[" + lines + "]");
  for (const auto& [number, guest] : guests_) guest->visitor.tellLog(body, freshLog_.size());
  freshLog_.clear();
}

void Page::catchUp() {
  std::erase_if(guests_, [](const auto& entry) { return entry.second->isLeaving; });
  tellLog();
  std::map<Visitor::Part, std::string> bodies;  // written once for all pages
  const auto bodyForAll = [this, &bodies](Visitor::Part part) {
    const auto [body, isNew] = bodies.try_emplace(part);
    if (isNew) body->second = bodyOf(part);
    return body->second;
  };
  for (const auto& [number, guest] : guests_) settle(guest->visitor, bodyForAll);
}

void Page::settle(Visitor& visitor, const Visitor::BodyOf& bodyOf) const {
  visitor.settle(bodyOf, [this](const Missed& missed) {
    return bodyFrom({{"type", "missed"},
                     {"now", source_.now()},
                     {"log", missed.log},
                     {"events", missed.events}});
  });
}

std::string Page::bodyOf(Visitor::Part part) const {
  const auto body = [this](const char* name, Json value) {
    return bodyFrom({{"type", name}, {"now", source_.now()}, {name, std::move(value)}});
  };
  switch (part) {
    case Visitor::Part::kView:
      return body("view", source_.view());
    case Visitor::Part::kApplications:
      return body("applications", source_.applications());
    case Visitor::Part::kTags:
      break;
  }
  std::string trouble;  // told to those who open the page
  return body("tags", tags_.tags(trouble));
}

std::string Page::greeting() {
  std::string trouble;
  const Json hello = {{"type", "hello"},
                      {"version", kProtocolVersion},
                      {"now", source_.now()},
                      {"title", source_.title()},
                      {"mode", source_.mode()},
                      {"view", source_.view()},
                      {"applications", source_.applications()},
                      {"stimuli", source_.stimuli()},
                      {"tags", tags_.tags(trouble)},
                      {"trouble", trouble},
                      {"missed", {{"log", log_.forgotten()}, {"events", events_.forgotten()}}}};
  return bodyFrom(hello, "log", log_.array()) + ",\"messages\":" + events_.array();
}

void Page::welcome(SoupWebsocketConnection* connection) {
  tellLog();  // the greeting has these lines too, and is for the new one alone
  if (guests_.size() >= 2 * kMostPages) return;  // without a word
  const bool isFull = guests_.size() >= kMostPages;
  PageSocket::Owner& owner = *this;
  const auto number = ++lastNumber_;
  const auto [place, isNew] =
      guests_.emplace(number, std::make_unique<Guest>(owner, number, connection));
  Guest& guest = *place->second;
  if (isFull) return guest.socket.close(kTooManyPages, "too many pages are open");
  guest.visitor.tell(greeting());
}

void Page::frameArrived(PageSocket::Number page, std::string_view text) {
  const auto found = guests_.find(page);
  if (found == guests_.end() || found->second->isLeaving) return;
  Guest& guest = *found->second;
  Desk desk(*this, guest.visitor);
  if (const auto outcome = takeRequest(text, desk)) {
    Json frame = *outcome;
    frame["now"] = source_.now();
    guest.visitor.tell(bodyFrom(frame));
  }
  if (guest.visitor.isOverrun()) return showOut(guest);
  settle(guest.visitor, [this](Visitor::Part part) { return bodyOf(part); });
}

// It would not read a word of farewell either. Its socket ends when it is no longer in use.
void Page::showOut(Guest& guest) {
  guest.isLeaving = true;
  soon_.ask();
}

void Page::pageLeft(PageSocket::Number page) { guests_.erase(page); }

}  // namespace morvik::devkit
