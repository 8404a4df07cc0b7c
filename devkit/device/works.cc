// Places, and timers that may come too late.
#include "device/works.h"

#include <algorithm>
#include <utility>

namespace morvik::devkit {

void Works::begin(Work work, Order order, std::chrono::milliseconds length) {
  const Underway underway{work, order.application, order.request, {}, {}};
  place(work).taken = Taken{underway, std::move(order)};
  prolong(work, length);
}

void Works::prolong(Work work, std::chrono::milliseconds length) {
  Place& at = place(work);
  const unsigned turn = ++at.turn;
  if (!at.taken) return;
  at.taken->underway.begun = scheduler_.now();
  at.taken->underway.length = std::min(length, kLongestWork);
  scheduler_.after(*at.taken->underway.length, [this, work, turn] {
    if (place(work).turn == turn) timeIsUp_(work);
  });
}

void Works::suspend(Work work) {
  Place& at = place(work);
  ++at.turn;
  if (at.taken) at.taken->underway.length.reset();
}

std::optional<Works::Taken> Works::take(Work work) {
  ++place(work).turn;
  return std::exchange(place(work).taken, std::nullopt);
}

std::optional<Underway> Works::find(Work work) const {
  const std::optional<Taken>& taken = place(work).taken;
  return taken ? std::optional(taken->underway) : std::nullopt;
}

std::vector<Underway> Works::all() const {
  std::vector<Underway> all;
  for (const Place& place : places_) {
    if (place.taken) all.push_back(place.taken->underway);
  }
  return all;
}

}  // namespace morvik::devkit
