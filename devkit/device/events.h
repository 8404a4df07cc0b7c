// Tells whoever wants to know what happens at the device.
#pragma once

#include <deque>
#include <functional>
#include <vector>

#include "device/event.h"

namespace morvik::devkit {

/// Hears events. It is told in the one thread of the device, and so is to be quick.
class Observer {
 public:
  virtual ~Observer() = default;
  /// May do to the device whatever it likes, and to the list of observers, but must not end the
  /// device. What happens by it is told when all have heard this event. An observer that throws is
  /// removed; the others hear of it as Trouble.
  virtual void happened(const Event& event) = 0;
};

/// The list of observers. All of them hear all events in the same order, each event whole before
/// the next one.
class Events {
 public:
  using Clock = std::function<std::chrono::milliseconds()>;

  explicit Events(Clock clock) : clock_(std::move(clock)) {}
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;

  /// From now on the observer hears what happens, and nothing that happened before, even if that is
  /// still being told. It must live until it is removed. One that is there already stays as it is.
  void add(Observer& observer);
  /// The observer hears nothing more from now on. One that is not there is no mistake.
  void remove(const Observer& observer);

  /// Tells everybody, or sees that everybody is told once nothing stands in the way: another event
  /// that is being told, or a Pause.
  void raise(Event::What what);

  /// While one lives, nothing is told: observers meet the device at rest, and may change it.
  class Pause {
   public:
    explicit Pause(Events& events) : events_(events) { ++events.pauses_; }
    ~Pause() {
      --events_.pauses_;
      events_.tellUntold();
    }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    Events& events_;
  };

 private:
  struct Listener {
    Observer* observer;       // null once it is removed
    std::uint64_t heardUpTo;  // the number of the last event that is not for it
  };

  void tellUntold();
  void tellAll(const Event& event);
  void tell(Observer& observer, const Event& event);
  void forgetRemoved();

  Clock clock_;
  std::vector<Listener> listeners_;
  std::deque<Event> untold_;
  std::uint64_t lastNumber_ = 0;
  unsigned pauses_ = 0;
  bool telling_ = false;
};

/// An observer on the list for as long as this lives.
class Observation {
 public:
  Observation(Events& events, Observer& observer) : events_(events), observer_(observer) {
    events.add(observer);
  }
  ~Observation() { events_.remove(observer_); }
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;

 private:
  Events& events_;
  Observer& observer_;
};

}  // namespace morvik::devkit
