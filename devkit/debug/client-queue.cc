// A queue with a bell.
#include "debug/client-queue.h"

#include <utility>

namespace morvik::devkit {

void ClientQueue::setWake(std::function<void()> wake) {
  const std::lock_guard lock(mutex_);
  wake_ = std::move(wake);
  woken_ = false;
}

// Under the lock, so that nobody is woken any more once that was taken away.
void ClientQueue::put(ClientEvent event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::move(event));
  came_.notify_all();
  if (wake_ && !std::exchange(woken_, true)) wake_();
}

void ClientQueue::looks() {
  const std::lock_guard lock(mutex_);
  woken_ = false;
}

bool ClientQueue::take(const MayTake& may, ClientEvent& event) {
  const std::lock_guard lock(mutex_);
  if (!isReady(may)) return false;
  event = pop();
  return true;
}

ClientEvent ClientQueue::await(const MayTake& may) {
  std::unique_lock lock(mutex_);
  came_.wait(lock, [&] { return isReady(may); });
  return pop();
}

ClientEvent ClientQueue::pop() {
  ClientEvent event = std::move(events_.front());
  events_.pop_front();
  return event;
}

}  // namespace morvik::devkit
