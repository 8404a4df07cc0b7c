// Shows a program what happens, one line of JSON for each thing; docs/device-json.md describes
// them.
#pragma once

#include <functional>
#include <string>

#include "device/events.h"

namespace morvik::devkit {

class EventLines : public Observer {
 public:
  /// Gets each line without its line end.
  using Sink = std::function<void(const std::string& line)>;

  explicit EventLines(Sink sink) : sink_(std::move(sink)) {}

  void happened(const Event& event) override;

 private:
  Sink sink_;
};

}  // namespace morvik::devkit
