// What a virtual device would be by now that had got the same messages.
#pragma once

#include "device/device.h"
#include "server/agenda.h"

namespace morvik::devkit {

/// Follows what passes between applications and another device. Its own answers go nowhere.
class Shadow : private Outlet, private Observer {
 public:
  /// The events of the other device, which must outlive this.
  explicit Shadow(Events& events);

  Device& device() { return device_; }

 private:
  void send(AppNumber /*to*/, const zeph::ZephMsg& /*message*/,
            const Delivery& /*delivery*/) override {}
  void drop(AppNumber /*application*/) override {}
  void happened(const Event& event) override;

  Agenda agenda_;
  Device device_;
  Observation hears_;
};

}  // namespace morvik::devkit
