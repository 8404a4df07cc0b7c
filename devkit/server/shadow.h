// A real device as its messages show it.
#pragma once

#include <deque>
#include <map>
#include <string>

#include "device/commands.h"
#include "device/device.h"
#include "server/agenda.h"

namespace morvik::devkit {

/// What a virtual device would be by now that had done what the real one behind a relay has done. A
/// command counts once the real one has taken it, which its answer tells; what that tells of itself
/// counts more than what was to be expected of it. Works on the thread-default main context.
class Shadow : private Outlet, private Observer {
 public:
  /// Hears of the messages there, and tells what has changed. The events must outlive the shadow;
  /// so must a scheduler, which stands in the place of the real time.
  explicit Shadow(Events& events, Scheduler* scheduler = nullptr);

  Device& device() { return device_; }

 private:
  // Tells others of the shadow's own changes.
  class Echo : public Observer {
   public:
    explicit Echo(Events& to) : to_(to) {}

   private:
    void happened(const Event& event) override;

    Events& to_;
  };

  // Commands of one application that wait for their answers, oldest first.
  using Waiting = std::deque<PassedMessage>;

  void send(AppNumber /*to*/, const zeph::ZephMsg& /*message*/,
            const Delivery& /*delivery*/) override {}
  void drop(AppNumber /*application*/) override {}
  void happened(const Event& event) override;

  void await(const Received& received);
  void hear(AppNumber application, const zeph::ZephMsg& message);
  void carryOut(AppNumber application, const zeph::ZephMsg& answer);
  void letEndBeTold(const std::string& request);
  void endWork(AppNumber application, const zeph::ZephMsg& answer);

  Agenda agenda_;
  Device device_;
  std::map<AppNumber, Waiting> waiting_;
  Echo echo_;
  Observation tells_;
  Observation hears_;
};

}  // namespace morvik::devkit
