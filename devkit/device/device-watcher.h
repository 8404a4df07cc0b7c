// Whoever wants to know what happens between the device and its applications.
#pragma once

#include <string>

#include "device/device.h"

namespace morvik::devkit {

class DeviceWatcher {
 public:
  virtual ~DeviceWatcher() = default;
  virtual void came(AppNumber application) = 0;
  // Before the device answers.
  virtual void received(AppNumber application, const zeph::ZephMsg& message) = 0;
  virtual void sent(AppNumber application, const zeph::ZephMsg& message) = 0;
  // The application did what it must not do. That it left is told next.
  virtual void trouble(AppNumber application, const std::string& what) = 0;
  // Something happened at the device that no message tells of.
  virtual void happened(const std::string& what) = 0;
  virtual void left(AppNumber application) = 0;
};

}  // namespace morvik::devkit
