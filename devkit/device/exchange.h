// One request and every way to answer it: what the function of a command gets.
#pragma once

#include <chrono>
#include <string>

#include "device/device.h"

namespace morvik::devkit {

/// Lives for one call of the function.
class Exchange {
 public:
  Exchange(Device& device, const Application& application, const zeph::ZephMsg& request)
      : device_(device), application_(application), request_(request) {}

  const zeph::ZephMsg& request() const { return request_; }
  const Application& application() const { return application_; }
  Device& device() const { return device_; }
  const DeviceState& state() const { return device_.state(); }

  /// The request shows the interactive id that this application was granted.
  bool carriesGrant() const;

  /// The first answer to a command: a code, and a description for whoever reads along.
  void respond(zeph::VReturnCode code, const std::string& description = "") const;

  /// Answers with a payload of the caller's own. The message needs no id: it is given one, and the
  /// correlation to the request.
  void reply(zeph::ZephMsg message) const;

  /// Tells that a real device may not do what is asked; the request is answered all the same.
  void doubt(Doubt::About about, const std::string& value, const std::string& text) const;

  /// Takes up a work that ends by itself after the given time, and then tells so by an event. The
  /// request is yet to be answered: it was CANCELLED work of the same kind that ended here.
  void undertake(Work work, std::chrono::milliseconds length, Order::AtEnd atEnd = {}) const;

 private:
  Device& device_;
  const Application& application_;
  const zeph::ZephMsg& request_;
};

}  // namespace morvik::devkit
