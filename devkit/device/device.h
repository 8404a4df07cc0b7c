// The virtual device: what it is, who uses it, and what goes on. It knows messages, and neither
// sockets nor screens; commands.h answers messages, and stimuli.h is the world around it.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device/events.h"
#include "device/faults.h"
#include "device/scheduler.h"
#include "device/sound-address.h"
#include "device/state.h"
#include "device/store.h"
#include "device/works.h"

namespace morvik::devkit {

/// Where the device's messages go, and what it does to its connections.
class Outlet {
 public:
  virtual ~Outlet() = default;
  /// The application came and has not left.
  virtual void send(AppNumber application, const zeph::ZephMsg& message,
                    const Delivery& delivery) = 0;
  /// Ends the connection of an application.
  virtual void drop(AppNumber application) = 0;
};

/// Everything happens in one thread. What happens in a call is told at its end, when the device is
/// at rest, or, when an observer calls, right after the event that the observer is told.
class Device {
 public:
  /// Outlet and scheduler must outlive the device, or at least never call it again once it is gone.
  Device(Outlet& outlet, Scheduler& scheduler, std::unique_ptr<Store> store = Store::inMemory());
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  void applicationCame(AppNumber number);
  /// `trouble` tells what the application did wrong, if that is why.
  void applicationLeft(AppNumber number, const std::string& trouble = "");

  /// Who hears what happens.
  Events& events() { return events_; }

  const DeviceState& state() const { return state_; }
  const std::map<AppNumber, Application>& applications() const { return applications_; }
  /// Null when there is no such application.
  const Application* application(AppNumber number) const;
  const Works& works() const { return works_; }
  const Faults& faults() const { return faults_; }
  Store& store() const { return *store_; }
  std::chrono::milliseconds now() const { return scheduler_.now(); }

  /// Where the files are that applications play from their folders.
  const AppFolders& appFolders() const { return appFolders_; }
  void setAppFolders(AppFolders folders) { appFolders_ = std::move(folders); }

  // What follows is for features.

  /// The only way to change the state: `part` names the part of the view that is then another.
  template <class How>
  void change(const char* part, How how) {
    how(state_);
    changed(part);
  }
  /// The same for one application. Nothing when it is gone.
  template <class How>
  void changeApplication(AppNumber number, How how) {
    const auto found = applications_.find(number);
    if (found == applications_.end()) return;
    how(found->second);
    changed("applications");
  }
  /// The same for the faults.
  template <class How>
  void changeFaults(How how) {
    how(faults_);
    changed("faults");
  }
  /// Says so of a part that is kept elsewhere, in the store.
  void changed(const char* part) { events_.raise(Changed{part}); }
  void note(const std::string& what) { events_.raise(Noted{what}); }
  /// Tells a doubt of what an application asks for, unless it was told before or there were
  /// kMostDoubts of its kind. Nothing when the application is gone.
  void doubt(AppNumber application, Doubt doubt);

  /// The message is given an id. One for an application that is gone is dropped.
  void send(AppNumber to, zeph::ZephMsg message);
  /// The same to several; `to` are applications that are there.
  void sendTo(const std::vector<AppNumber>& to, const zeph::ZephMsg& message);
  void sendToAll(const zeph::ZephMsg& message);
  void drop(AppNumber application) { outlet_.drop(application); }
  void after(std::chrono::milliseconds delay, std::function<void()> what);

  /// Begins a work that ends by itself after the given time. One of the same kind is cut short.
  void begin(Work work, Order order, std::chrono::milliseconds length);
  /// Lets a work go on for the given time from now, in place of the time that it had.
  void prolong(Work work, std::chrono::milliseconds length);
  /// Lets a work rest, without an end of its own.
  void suspend(Work work);
  /// Ends a work and tells whoever asked for it. False when nothing of the kind was going on.
  bool end(Work work, zeph::VReturnCode code, const std::string& description = "");
  /// Ends a work without a word to whoever asked for it; the caller answers.
  std::optional<Underway> take(Work work);

 private:
  void pass(AppNumber to, zeph::ZephMsg message, std::vector<AppNumber> together);
  Delivery deliveryTo(AppNumber application);

  Outlet& outlet_;
  Scheduler& scheduler_;
  std::unique_ptr<Store> store_;
  DeviceState state_;
  Faults faults_;
  std::map<AppNumber, Application> applications_;
  AppFolders appFolders_;
  Events events_;
  Works works_;
};

}  // namespace morvik::devkit
