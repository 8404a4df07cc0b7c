// One class for each kind of device.
#include "run/session-device.h"

#include "device/stimuli-json.h"
#include "run/relay.h"
#include "server/agenda.h"
#include "server/device-server.h"
#include "server/shadow.h"

namespace morvik::devkit {
namespace {

class VirtualDevice : public SessionDevice {
 public:
  explicit VirtualDevice(std::unique_ptr<Store> store, Scheduler* scheduler = nullptr)
      : server_(std::move(store), scheduler) {}

  bool listen(std::uint16_t port, std::string& trouble) {
    const auto failure = server_.listen(port, trouble);
    if (failure == DeviceServer::Failure::kPortBusy) {
      trouble = "port " + std::to_string(port) + " is in use, perhaps by another virtual device";
    }
    return !failure;
  }

  Events& events() override { return server_.device().events(); }
  std::uint16_t port() const override { return server_.port(); }
  std::uint16_t portOf(AppNumber application) const override { return server_.portOf(application); }
  DeviceView view() const override { return viewOf(server_.device()); }
  Outcome stimulate(std::string_view line) override {
    return devkit::stimulate(server_.device(), line);
  }
  Outcome request(const Json& stimulus) override {
    return stimulateByName(server_.device(), stimulus);
  }
  void setAppFolders(AppFolders folders) override {
    server_.device().setAppFolders(std::move(folders));
  }
  bool isDelivering() const override { return server_.isDelivering(); }
  bool isVirtual() const override { return true; }

 private:
  mutable DeviceServer server_;
};

class RelayedDevice : public SessionDevice {
 public:
  RelayedDevice() : events_([this] { return agenda_.now(); }), relay_(events_) {}

  bool listen(const std::string& server, std::string& trouble) {
    const auto reason = relay_.listen(server);
    if (reason) trouble = *reason;
    return !reason;
  }

  Events& events() override { return events_; }
  std::uint16_t port() const override { return relay_.port(); }
  std::uint16_t portOf(AppNumber application) const override { return relay_.portOf(application); }
  // A real device answers for itself, so the doubts of the one beside it are none.
  DeviceView view() const override {
    DeviceView view = viewOf(shadow_.device());
    for (auto& [number, application] : view.applications) application.doubts.clear();
    return view;
  }
  Outcome stimulate(std::string_view line) override {
    return isQuestion(line) ? devkit::stimulate(shadow_.device(), line) : refusal();
  }
  Outcome request(const Json& /*stimulus*/) override { return refusal(); }
  void setAppFolders(AppFolders /*folders*/) override {}
  bool isDelivering() const override { return false; }
  bool isVirtual() const override { return false; }

 private:
  static Outcome refusal() {
    return {.done = false, .text = "this is a real device: do it there\n"};
  }

  Agenda agenda_;
  Events events_;
  Relay relay_;
  mutable Shadow shadow_{events_};
};

}  // namespace

std::unique_ptr<SessionDevice> makeVirtualDevice(std::uint16_t port, const std::string& stateFolder,
                                                 std::string& trouble) {
  auto store = Store::open(stateFolder, trouble);
  if (!store) return nullptr;
  auto device = std::make_unique<VirtualDevice>(std::move(store));
  if (!device->listen(port, trouble)) return nullptr;
  return device;
}

std::unique_ptr<SessionDevice> makeVirtualDevice(Scheduler& scheduler, std::string& trouble) {
  auto device = std::make_unique<VirtualDevice>(Store::inMemory(), &scheduler);
  if (!device->listen(0, trouble)) return nullptr;
  return device;
}

std::unique_ptr<SessionDevice> makeRelayedDevice(const std::string& server, std::string& trouble) {
  auto device = std::make_unique<RelayedDevice>();
  if (!device->listen(server, trouble)) return nullptr;
  return device;
}

}  // namespace morvik::devkit
