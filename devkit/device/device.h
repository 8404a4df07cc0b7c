// The virtual device: what it is, who uses it, and how it answers. It knows messages, and neither
// sockets nor screens.
#pragma once

#include <zeph-message.pb.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "device/scheduler.h"

namespace morvik::devkit {

namespace zeph = net::quelta::zeph::message;

// Applications are numbered 1, 2, 3 in the order in which they came. A number is never used again.
using AppNumber = unsigned;

struct Led {
  enum class Effect { kLight, kFade, kPulse };
  std::string color;  // as the application wrote it; empty until the first command
  Effect effect = Effect::kLight;
};

// What the device is, apart from who uses it.
struct DeviceState {
  // What `morvik.info` gives, in this order.
  std::vector<std::pair<std::string, std::string>> infos = {
      {"name", "Virtual Morvik"}, {"model", "virtual"}, {"serial", "VM-0000-0001"},
      {"firmware", "1.0.0"},      {"lang", "en"},
  };
  Led led;
};

struct Application {
  AppNumber number = 0;
  std::string interactiveId;  // what was granted; empty without interactive mode
};

// Where the device's messages go.
class Outlet {
 public:
  virtual ~Outlet() = default;
  // Messages for an application that is gone are dropped.
  virtual void send(AppNumber application, const zeph::ZephMsg& message) = 0;
};

class Device {
 public:
  // Both must outlive the device, or at least never call it again once it is gone.
  Device(Outlet& outlet, Scheduler& scheduler) : outlet_(outlet), scheduler_(scheduler) {}

  void applicationCame(AppNumber number);
  void applicationLeft(AppNumber number);

  // Answers one message of an application that came and has not left. Only the first payload of a
  // message counts. Answers go to the outlet, before this returns or later.
  void receive(AppNumber from, const zeph::ZephMsg& request);

  const DeviceState& state() const { return state_; }
  // Null when there is no such application.
  const Application* application(AppNumber number) const;

 private:
  friend class Exchange;

  Outlet& outlet_;
  Scheduler& scheduler_;
  DeviceState state_;
  std::map<AppNumber, Application> applications_;
};

}  // namespace morvik::devkit
