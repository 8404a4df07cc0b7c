// What the page shows and what it can do, without knowing where that comes from: a virtual device
// alone, or applications that are run on one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "device/json.h"
#include "device/stimuli.h"

namespace morvik::devkit {

/// What can be done to an application from the page.
struct PageAct {
  std::string action;      // "restart", "launch" or "stop"
  std::string app;         // the application's name
  std::string launchType;  // "plain", "RFID;..." or "ASR;..."; empty unless it is to be launched
};

/// Answers from the state of that moment. docs/page-protocol.md has the forms of all JSON.
class PageSource {
 public:
  virtual ~PageSource() = default;

  /// The page's heading.
  virtual std::string title() const = 0;
  /// "device", "run" or "relay".
  virtual std::string mode() const = 0;
  /// The device's clock, in milliseconds: the one that the view's times are told in.
  virtual std::int64_t now() const = 0;
  /// The device as it is.
  virtual Json view() const = 0;
  /// What the world can do to the device, for the page to draw its controls. Asked for once for
  /// each page.
  virtual Json stimuli() const = 0;
  /// The applications and their states, an array.
  virtual Json applications() const = 0;

  /// Does one of the stimuli. `arguments` is an object; `app` is the one application that is meant,
  /// nothing means all. Everything that is wrong with them is told in the outcome.
  virtual Outcome stimulate(const std::string& name, const Json& arguments,
                            std::optional<unsigned> app) = 0;
  virtual Outcome act(const PageAct& act) = 0;
};

}  // namespace morvik::devkit
