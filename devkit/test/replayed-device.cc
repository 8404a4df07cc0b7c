// The replay's socket, and a shadow of the device that once answered.
#include "test/replayed-device.h"

#include "device/stimuli-json.h"
#include "replay/replay-server.h"
#include "server/shadow.h"

namespace morvik::devkit {
namespace {

class ReplayedDevice : public SessionDevice {
 public:
  ReplayedDevice(Recording recording, Scheduler& scheduler)
      : server_(std::move(recording), &scheduler), shadow_(server_.replay().events(), &scheduler) {}

  bool listen(std::string& trouble) { return !server_.listen(0, trouble); }

  Events& events() override { return server_.replay().events(); }
  std::uint16_t port() const override { return server_.port(); }
  std::uint16_t portOf(AppNumber application) const override { return server_.portOf(application); }
  DeviceView view() const override { return viewOf(shadow_.device()); }
  Outcome stimulate(std::string_view line) override {
    return isQuestion(line) ? devkit::stimulate(shadow_.device(), line) : refusal();
  }
  Outcome request(const Json& /*stimulus*/) override { return refusal(); }
  void setAppFolders(AppFolders /*folders*/) override {}
  bool isDelivering() const override { return server_.isDelivering(); }
  bool isVirtual() const override { return false; }

 private:
  static Outcome refusal() {
    return refused("a recording is replayed: what happens to the device stands in it");
  }

  ReplayServer server_;
  mutable Shadow shadow_;
};

}  // namespace

std::unique_ptr<SessionDevice> makeReplayedDevice(const std::filesystem::path& recording,
                                                  Scheduler& scheduler, std::string& trouble) {
  auto read = Recording::read(recording, trouble);
  if (!read) return nullptr;
  auto device = std::make_unique<ReplayedDevice>(std::move(*read), scheduler);
  if (!device->listen(trouble)) return nullptr;
  return device;
}

}  // namespace morvik::devkit
