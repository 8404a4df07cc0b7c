// A device without sockets and without waiting: what it sends is kept, and its time passes when a
// test says so.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "device/commands.h"
#include "device/device.h"
#include "device/stimuli.h"

namespace morvik::test {

struct Outgoing {
  devkit::AppNumber to;
  devkit::zeph::ZephMsg message;
  devkit::Delivery delivery;
};

class KeptOutlet : public devkit::Outlet {
 public:
  void send(devkit::AppNumber application, const devkit::zeph::ZephMsg& message,
            const devkit::Delivery& delivery) override {
    sent.push_back({application, message, delivery});
  }
  void drop(devkit::AppNumber application) override { dropped.push_back(application); }

  std::vector<Outgoing> sent;
  std::vector<devkit::AppNumber> dropped;
};

// Every event, in the order in which it was told.
class KeptEvents : public devkit::Observer {
 public:
  void happened(const devkit::Event& event) override { all.push_back(event); }

  // All events of one kind.
  template <class What>
  std::vector<What> of() const {
    std::vector<What> found;
    for (const devkit::Event& event : all) {
      if (const auto* what = std::get_if<What>(&event.what)) found.push_back(*what);
    }
    return found;
  }
  std::vector<std::string> notes() const;

  std::vector<devkit::Event> all;
};

class HeldScheduler : public devkit::Scheduler {
 public:
  struct Held {
    std::chrono::milliseconds delay;
    std::function<void()> what;
    std::chrono::milliseconds due;
  };

  void after(std::chrono::milliseconds delay, std::function<void()> what) override {
    held.push_back({delay, std::move(what), now_ + delay});
  }
  std::chrono::milliseconds now() const override { return now_; }
  // Does what comes within that time, in its order.
  void pass(std::chrono::milliseconds time);

  std::vector<Held> held;

 private:
  std::chrono::milliseconds now_{1767225600000};  // the first of January 2026
};

using Lines = std::vector<std::string>;

// A device that applications 1 and 2 use, each with interactive mode under the id "granted".
class Bench {
 public:
  Bench();
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  // Sends a command whose payload is written in protobuf's text form, such as "ping {}". Gives what
  // the device says to it at once.
  Lines command(const std::string& payload, devkit::AppNumber from = 1);
  // Gives what the device says to that at once.
  Lines stimulus(const std::string& line);
  // What the device notes of that line.
  Lines noted(const std::string& line);
  // What a line that is not done is answered with; a failure of the test when it is done, or when
  // the device says anything.
  std::string refused(const std::string& line);
  // Gives what the device says within that time.
  Lines pass(std::chrono::milliseconds time);
  // What was said since the last of these calls: "2: event { code: OK }" for one to application 2.
  // Between the number and the payload stands "re " when the message answers the last command of
  // that application, "re? " when it answers an earlier one.
  Lines said();

  KeptOutlet outlet;
  HeldScheduler scheduler;
  devkit::Device device{outlet, scheduler};
  KeptEvents events;  // since the applications came

 private:
  std::map<devkit::AppNumber, std::string> lastIds_;
};

}  // namespace morvik::test
