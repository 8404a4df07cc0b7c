// Who uses the device, and what is being done.
#include "device/device.h"

#include <algorithm>

#include "device/features/features.h"
#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

bool isKnown(const std::vector<Doubt>& doubts, const Doubt& doubt) {
  return std::ranges::any_of(doubts, [&](const Doubt& one) {
    return one.about == doubt.about && one.value == doubt.value;
  });
}

}  // namespace

using std::chrono::milliseconds;

Device::Device(Outlet& outlet, Scheduler& scheduler, std::unique_ptr<Store> store)
    : outlet_(outlet),
      scheduler_(scheduler),
      store_(std::move(store)),
      events_([this] { return scheduler_.now(); }),
      works_(scheduler, [this](Work work) {
        const Events::Pause pause(events_);
        end(work, zeph::TERMINATED);
      }) {}

void Device::applicationCame(AppNumber number) {
  const Events::Pause pause(events_);
  applications_[number] = {};
  applications_[number].number = number;
  applications_[number].came = now();
  events_.raise(Came{number});
  changed("applications");
}

// Off the list first: nothing more is sent to it.
void Device::applicationLeft(AppNumber number, const std::string& trouble) {
  const Events::Pause pause(events_);
  const auto gone = applications_.extract(number);
  if (gone.empty()) return;
  changed("applications");
  if (faults_.deliveries().contains(number)) {
    changeFaults([number](Faults& faults) { faults.applicationLeft(number); });
  }
  for (const Feature* feature : features()) {
    if (feature->applicationLeft != nullptr) feature->applicationLeft(*this, gone.mapped());
  }
  if (!trouble.empty()) {
    events_.raise(Trouble{number, trouble, ServerLoss::kEnded, "the application " + trouble});
  }
  events_.raise(Left{number});
}

const Application* Device::application(AppNumber number) const {
  const auto found = applications_.find(number);
  return found != applications_.end() ? &found->second : nullptr;
}

void Device::doubt(AppNumber number, Doubt doubt) {
  const Application* asker = application(number);
  doubt.value = shortened(doubt.value);
  if (asker == nullptr || isKnown(asker->doubts, doubt)) return;
  const auto before = std::ranges::count(asker->doubts, doubt.about, &Doubt::about);
  if (static_cast<std::size_t>(before) >= kMostDoubts) return;
  if (static_cast<std::size_t>(before) + 1 == kMostDoubts) {
    doubt.text += " (more of this kind are not told)";
  }
  changeApplication(number, [&](Application& changed) { changed.doubts.push_back(doubt); });
  events_.raise(Doubted{number, std::move(doubt)});
}

void Device::after(milliseconds delay, std::function<void()> what) {
  scheduler_.after(delay, [this, what = std::move(what)] {
    const Events::Pause pause(events_);
    what();
  });
}

void Device::send(AppNumber to, zeph::ZephMsg message) { pass(to, std::move(message), {}); }

void Device::pass(AppNumber to, zeph::ZephMsg message, std::vector<AppNumber> together) {
  if (application(to) == nullptr) return;
  message.set_id(GText(g_uuid_string_random()).get());
  const auto passed = std::make_shared<const zeph::ZephMsg>(std::move(message));
  events_.raise(Sent{to, passed, std::move(together)});
  outlet_.send(to, *passed, deliveryTo(to));
}

Delivery Device::deliveryTo(AppNumber application) {
  if (!faults_.deliveries().contains(application)) return {};
  const Delivery delivery = faults_.deliveryTo(application);
  changed("faults");
  return delivery;
}

void Device::sendTo(const std::vector<AppNumber>& to, const zeph::ZephMsg& message) {
  const std::vector<AppNumber> together = to.size() > 1 ? to : std::vector<AppNumber>{};
  for (const AppNumber number : to) pass(number, message, together);
}

void Device::sendToAll(const zeph::ZephMsg& message) {
  std::vector<AppNumber> everybody;
  for (const auto& [number, application] : applications_) everybody.push_back(number);
  sendTo(everybody, message);
}

void Device::begin(Work work, Order order, milliseconds length) {
  end(work, zeph::CANCELLED);
  works_.begin(work, std::move(order), length);
  events_.raise(Began{*works_.find(work)});
}

void Device::prolong(Work work, milliseconds length) {
  works_.prolong(work, length);
  if (const auto underway = works_.find(work)) events_.raise(Began{*underway});
}

void Device::suspend(Work work) {
  works_.suspend(work);
  changed("work");
}

bool Device::end(Work work, zeph::VReturnCode code, const std::string& description) {
  const std::optional<Works::Taken> taken = works_.take(work);
  if (!taken) return false;
  zeph::ZephMsg event;
  event.set_correlationid(taken->order.request);
  event.mutable_event()->set_code(code);
  if (!description.empty()) event.mutable_event()->set_description(description);
  if (taken->order.atEnd) taken->order.atEnd(event);
  events_.raise(Ended{taken->underway, event.event().code()});
  send(taken->order.application, std::move(event));
  return true;
}

std::optional<Underway> Device::take(Work work) {
  const std::optional<Works::Taken> taken = works_.take(work);
  if (!taken) return std::nullopt;
  events_.raise(Ended{taken->underway, std::nullopt});
  return taken->underway;
}

}  // namespace morvik::devkit
