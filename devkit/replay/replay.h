// A recording in the place of a device: applications ask, and are answered as those in it were.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "device/device.h"
#include "device/events.h"
#include "device/scheduler.h"
#include "replay/recording.h"

namespace morvik::devkit {

/// Each application takes the part of one in the recording: of the first one that nobody plays and
/// that asked first what this one asks first.
///
/// A request is compared with the recorded ones that were not asked yet, in their order; ids do not
/// count, nor do secrets. What answered the recorded one then comes, as long after the request as
/// it did, with the ids of the one that asks. What nobody asked for, such as a press of the button,
/// comes as long after the request before it.
///
/// An application leaves the recording when it asks what is not in it, then it is answered with
/// ERROR; when it asks in another order; and when it goes before it has asked all. Each is told as
/// Trouble, and counted.
class Replay {
 public:
  /// Outlet and scheduler must outlive the replay, or at least never call it again once it is gone.
  Replay(Recording recording, Outlet& outlet, Scheduler& scheduler);
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  void applicationCame(AppNumber application);
  /// A message with all its required fields.
  void receive(AppNumber application, zeph::ZephMsg request);
  /// `trouble` tells what the application did wrong, if that is why.
  void applicationLeft(AppNumber application, const std::string& trouble = "");

  /// Who hears what happens: Came, Left, Received, Sent, Noted and Trouble.
  Events& events() { return events_; }
  std::chrono::milliseconds now() const { return scheduler_.now(); }

  /// How often applications left the recording so far.
  std::size_t departures() const { return departures_; }
  /// Conversations that no application has taken up yet.
  std::size_t untouched() const;

 private:
  using Time = std::chrono::milliseconds;

  // The part that an application plays.
  struct Part {
    const Conversation* conversation = nullptr;  // null until it is known which
    Time came{0};
    std::vector<bool> done;                      // by the index in the conversation
    std::set<std::string> requests;              // ids of the recorded ones
    std::map<std::string, std::string> asked;    // ids of requests: recorded, and as they come now
    std::map<std::string, std::string> granted;  // interactive ids: recorded, and as they come now
    bool told = false;                           // that it is through
  };

  void take(AppNumber application, Part& part, const Conversation& conversation);
  const Conversation* choose(const zeph::ZephMsg& request) const;
  std::vector<std::size_t> openRequests(const Part& part) const;
  void answer(AppNumber application, Part& part, const zeph::ZephMsg& request);
  void matched(AppNumber application, Part& part, std::size_t index, const zeph::ZephMsg& request);
  void refuse(AppNumber application, const Part& part, const zeph::ZephMsg& request);
  void anchor(AppNumber application, Part& part, std::size_t request,
              const std::string& recordedId);
  void schedule(AppNumber application, Part& part, std::size_t index, Time delay);
  void happen(AppNumber application, std::size_t index);
  void send(AppNumber application, zeph::ZephMsg message);
  void tellWhenThrough(AppNumber application, Part& part);
  void tellUnasked(AppNumber application, const Part& part);
  void depart(AppNumber application, const std::string& text);

  const Recording recording_;
  Outlet& outlet_;
  Scheduler& scheduler_;
  Events events_;
  std::map<AppNumber, Part> parts_;
  std::vector<const Conversation*> taken_;
  std::size_t departures_ = 0;
};

/// What differs between a recorded request and one that came, such as `led.light.color: "red" in
/// the recording, "blue" now`; empty when nothing does. Ids and secrets do not count.
std::string differenceOf(const zeph::ZephMsg& recorded, const zeph::ZephMsg& now);

}  // namespace morvik::devkit
