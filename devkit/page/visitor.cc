// Sending within the window.
#include "page/visitor.h"

namespace morvik::devkit {

void Visitor::tell(const std::string& body) {
  send_("{\"seq\":" + std::to_string(window_.add(body.size())) + "," + body + "}");
}

bool Visitor::offer(const std::string& body) {
  const bool room = window_.hasRoom(body.size());
  if (room) tell(body);
  return room;
}

void Visitor::tellEvent(const std::string& body) {
  if (missed_.any() || !offer(body)) ++missed_.events;
}

void Visitor::tellLog(const std::string& body, std::uint64_t lines) {
  if (missed_.any() || !offer(body)) missed_.log += lines;
}

void Visitor::settle(const BodyOf& bodyOf, const BodyOfMissed& bodyOfMissed) {
  if (missed_.any()) {
    if (!offer(bodyOfMissed(missed_))) return;
    missed_ = {};
  }
  for (const Part part : {Part::kView, Part::kApplications, Part::kTags}) {
    bool& owed = owed_[static_cast<int>(part)];
    owed = owed && !offer(bodyOf(part));
  }
}

}  // namespace morvik::devkit
