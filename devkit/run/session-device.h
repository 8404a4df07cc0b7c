// The device that the applications of a session use: the virtual one, or a real one behind the
// relay.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "device/events.h"
#include "device/json.h"
#include "device/scheduler.h"
#include "device/sound-address.h"
#include "device/stimuli.h"
#include "device/view.h"

namespace morvik::devkit {

/// Works on the thread-default main context.
class SessionDevice {
 public:
  virtual ~SessionDevice() = default;

  /// What happens at the device and on its connections.
  virtual Events& events() = 0;
  /// Where applications connect, on 127.0.0.1.
  virtual std::uint16_t port() const = 0;
  /// The port of an application's own end of its connection; 0 when there is no such application.
  virtual std::uint16_t portOf(AppNumber application) const = 0;
  /// What is known of it: everything of a virtual one, of a real one what messages tell.
  virtual DeviceView view() const = 0;
  /// Does what the world does to it. A real one refuses that, and answers questions as far as it is
  /// known.
  virtual Outcome stimulate(std::string_view line) = 0;
  virtual Outcome request(const Json& stimulus) = 0;
  /// Where applications have their files, for doubts about what they play.
  virtual void setAppFolders(AppFolders folders) = 0;
  /// Whether something that was sent has not yet arrived at an application.
  virtual bool isDelivering() const = 0;
  /// Whether stimuli are taken.
  virtual bool isVirtual() const = 0;
};

/// The virtual device on a port of its own choice with `port` 0. Null when that is not possible,
/// with the reason in `trouble`.
std::unique_ptr<SessionDevice> makeVirtualDevice(std::uint16_t port, const std::string& stateFolder,
                                                 std::string& trouble);

/// A virtual device on a port of its own choice, in time of the caller's own, which must outlive
/// it. It begins without messages, contacts and credentials and keeps none. Null as above.
std::unique_ptr<SessionDevice> makeVirtualDevice(Scheduler& scheduler, std::string& trouble);

/// The real device server at "HOST:PORT". Null as above.
std::unique_ptr<SessionDevice> makeRelayedDevice(const std::string& server, std::string& trouble);

}  // namespace morvik::devkit
