// The sockets and the device told of each other.
#include "server/device-server.h"

#include "device/commands.h"

namespace morvik::devkit {

DeviceServer::DeviceServer(std::unique_ptr<Store> store, Scheduler* scheduler)
    : sockets_(static_cast<AppSockets::Owner&>(*this)),
      device_(sockets_, scheduler != nullptr ? *scheduler : agenda_, std::move(store)) {}

void DeviceServer::applicationCame(AppNumber application) { device_.applicationCame(application); }

void DeviceServer::messageArrived(AppNumber application, zeph::ZephMsg message) {
  receive(device_, application, std::move(message));
}

void DeviceServer::applicationLeft(AppNumber application, const std::string& trouble) {
  device_.applicationLeft(application, trouble);
}

}  // namespace morvik::devkit
