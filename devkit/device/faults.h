// What goes wrong on purpose. It stands beside the device: its features know nothing of it.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "device/work.h"

namespace morvik::devkit {

/// Commands that get an answer of the world's choice in place of the device's own.
struct Refusal {
  static constexpr int kAlways = -1;
  zeph::VReturnCode code = zeph::ERROR;
  int field = 0;                  ///< the payload that is refused; 0 for any
  std::optional<AppNumber> only;  ///< whose commands; nothing for everybody's
  int left = 1;                   ///< how often, or kAlways
};

/// How a message travels: in one piece, or in several with pauses between them.
struct Delivery {
  std::size_t pieceSize = 0;  ///< bytes; 0 for one piece
  std::chrono::milliseconds pause{0};
};

/// The faults in force.
class Faults {
 public:
  /// Earlier refusals come first.
  void refuse(const Refusal& refusal) { refusals_.push_back(refusal); }
  void acceptAll() { refusals_.clear(); }
  /// `field` is the payload of the commands that are answered later, 0 for all.
  void delay(int field, std::chrono::milliseconds length) { delays_[field] = length; }
  /// For the next message to that application.
  void deliver(AppNumber application, const Delivery& delivery) {
    deliveries_[application] = delivery;
  }
  void applicationLeft(AppNumber application) { deliveries_.erase(application); }

  /// The code for this command in place of an answer; nothing when it is to be answered. Counts.
  std::optional<zeph::VReturnCode> refusalOf(AppNumber from, int field);
  std::chrono::milliseconds delayOf(int field) const;
  /// How the next message to that application travels. Counts.
  Delivery deliveryTo(AppNumber application);

  const std::vector<Refusal>& refusals() const { return refusals_; }
  const std::map<int, std::chrono::milliseconds>& delays() const { return delays_; }
  const std::map<AppNumber, Delivery>& deliveries() const { return deliveries_; }

 private:
  std::vector<Refusal> refusals_;
  std::map<int, std::chrono::milliseconds> delays_;  // by payload; 0 stands for all
  std::map<AppNumber, Delivery> deliveries_;
};

}  // namespace morvik::devkit
