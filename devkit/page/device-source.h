// A virtual device alone on the page: what it shows, and how what happens at it gets there.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "device/device.h"
#include "device/events.h"
#include "page/page-source.h"

namespace morvik::devkit {

class Page;

/// What a page shows of a device. Of the applications it knows what the device knows: numbers, and
/// not names.
class DeviceSource : public PageSource, private Observer {
 public:
  /// The device must outlive the source.
  explicit DeviceSource(Device& device);

  std::string title() const override { return "Virtual device"; }
  std::string mode() const override { return "device"; }
  std::int64_t now() const override { return device_.now().count(); }
  Json view() const override;
  Json stimuli() const override;
  Json applications() const override;
  Outcome stimulate(const std::string& name, const Json& arguments,
                    std::optional<unsigned> app) override;
  Outcome act(const PageAct& act) override;

 private:
  struct Gone {
    AppNumber number;
    std::int64_t since;
    std::string why;
  };

  void happened(const Event& event) override;

  Device& device_;
  std::map<AppNumber, std::string> troubles_;  // of applications that are about to go
  std::deque<Gone> gone_;                      // the last ones, oldest first
  Observation observation_;
};

/// Takes what happens at a device to a page, for as long as it lives.
class DeviceFeed : private Observer {
 public:
  /// Both must outlive it.
  DeviceFeed(Device& device, Page& page);

 private:
  void happened(const Event& event) override;

  Page& page_;
  Observation observation_;
};

/// Tells a program that reads events where the page is; an event on a line.
std::string pageGreeting(const Device& device, const std::string& address);

}  // namespace morvik::devkit
