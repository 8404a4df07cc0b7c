// The virtual device: what it is, who uses it, and how it answers. It knows messages, and neither
// sockets nor screens.
#pragma once

#include <zeph-message.pb.h>

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/scheduler.h"
#include "device/state.h"
#include "device/store.h"
#include "device/work.h"

namespace morvik::devkit {

// Where the device's messages go, and what it does to its connections.
class Outlet {
 public:
  virtual ~Outlet() = default;
  // Messages for an application that is gone are dropped.
  virtual void send(AppNumber application, const zeph::ZephMsg& message,
                    const Delivery& delivery) = 0;
  // Ends the connection of an application.
  virtual void drop(AppNumber application) = 0;
  // Something happened at the device that no message tells of.
  virtual void happened(const std::string& what) = 0;
};

class Device {
 public:
  // Outlet and scheduler must outlive the device, or at least never call it again once it is gone.
  Device(Outlet& outlet, Scheduler& scheduler, std::unique_ptr<Store> store = Store::inMemory())
      : outlet_(outlet), scheduler_(scheduler), store_(std::move(store)) {}
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  void applicationCame(AppNumber number);
  void applicationLeft(AppNumber number);

  // Answers one message of an application that came and has not left. Only the first payload of a
  // message counts. Answers go to the outlet, before this returns or later.
  void receive(AppNumber from, const zeph::ZephMsg& request);

  // The payloads that it answers, as fields of a message.
  static std::vector<const google::protobuf::FieldDescriptor*> commands();

  const DeviceState& state() const { return state_; }
  const std::map<AppNumber, Application>& applications() const { return applications_; }
  // Null when there is no such application.
  const Application* application(AppNumber number) const;

  // What follows is for the handlers of commands and for stimuli.

  DeviceState& state() { return state_; }
  Store& store() { return *store_; }
  Application* application(AppNumber number);

  // The message is given an id.
  void send(AppNumber to, zeph::ZephMsg message);
  void sendToAll(const zeph::ZephMsg& message);
  void drop(AppNumber application) { outlet_.drop(application); }
  void note(const std::string& what) { outlet_.happened(what); }
  void after(std::chrono::milliseconds delay, std::function<void()> what) {
    scheduler_.after(delay, std::move(what));
  }

  // Begins a work that ends by itself after the given time. One of the same kind is cut short.
  void begin(Work work, Order order, std::chrono::milliseconds length);
  // Lets a work go on for the given time from now, in place of the time that it had.
  void prolong(Work work, std::chrono::milliseconds length);
  // Lets a work go on without an end of its own.
  void suspend(Work work) { ++place(work).turn; }
  // Ends a work and tells whoever asked for it. False when nothing of the kind was going on.
  bool end(Work work, zeph::VReturnCode code, const std::string& description = "");
  // Ends a work without a word; the caller answers.
  std::optional<Order> take(Work work);
  // For whom a work of the kind goes on; nothing when none does.
  std::optional<AppNumber> whoseWork(Work work) const;

 private:
  // The code that the command input wants for this command, in place of an answer.
  std::optional<zeph::VReturnCode> refusalOf(AppNumber from, int field);
  std::chrono::milliseconds delayOf(int field) const;
  void answer(AppNumber from, const zeph::ZephMsg& request);
  Workplace& place(Work work) { return places_[static_cast<std::size_t>(work)]; }

  Outlet& outlet_;
  Scheduler& scheduler_;
  std::unique_ptr<Store> store_;
  DeviceState state_;
  std::map<AppNumber, Application> applications_;
  std::array<Workplace, kWorkKinds> places_;
};

}  // namespace morvik::devkit
