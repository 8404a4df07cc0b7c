// One event at a time, to a list that may change under way.
#include "device/events.h"

#include <algorithm>
#include <exception>

namespace morvik::devkit {

void Events::add(Observer& observer) {
  const bool known =
      std::any_of(listeners_.begin(), listeners_.end(),
                  [&](const Listener& listener) { return listener.observer == &observer; });
  if (!known) listeners_.push_back({&observer, lastNumber_});
}

// Only marked, since somebody may be going through the list.
void Events::remove(const Observer& observer) {
  for (Listener& listener : listeners_) {
    if (listener.observer == &observer) listener.observer = nullptr;
  }
  if (!telling_) forgetRemoved();
}

void Events::raise(Event::What what) {
  untold_.push_back({++lastNumber_, clock_(), std::move(what)});
  tellUntold();
}

void Events::tellUntold() {
  if (telling_ || pauses_ > 0) return;
  telling_ = true;
  while (!untold_.empty()) {
    const Event event = std::move(untold_.front());
    untold_.pop_front();
    tellAll(event);
  }
  telling_ = false;
  forgetRemoved();
}

// By index: the list may grow meanwhile. Who was added meanwhile has heard up to this event.
void Events::tellAll(const Event& event) {
  for (std::size_t i = 0; i < listeners_.size(); ++i) {
    const Listener listener = listeners_[i];
    if (listener.observer != nullptr && listener.heardUpTo < event.number) {
      tell(*listener.observer, event);
    }
  }
}

// An observer may throw anything, and the next one hears all the same.
void Events::tell(Observer& observer, const Event& event) {
  std::string why = "something that is no exception";
  try {
    observer.happened(event);
    return;
  } catch (const std::exception& exception) {
    why = exception.what();
  } catch (...) {
  }
  remove(observer);
  raise(Trouble{std::nullopt, "an observer failed and is told nothing more: " + why});
}

void Events::forgetRemoved() {
  std::erase_if(listeners_, [](const Listener& listener) { return listener.observer == nullptr; });
}

}  // namespace morvik::devkit
