// Takes stimuli and questions for a running tool from other processes of the same user.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "control/control-connection.h"
#include "device/owned.h"

namespace morvik::devkit {

/// Works on the thread-default main context. Who connects is told the title, then each line is
/// answered by one. The line {"watch": true} is answered, and from then on every event comes as a
/// line too. Processes of other users, who cannot open the folder, are sent away as well.
class ControlServer : private ControlConnection::Owner {
 public:
  /// What the source names must outlive the server.
  explicit ControlServer(ControlSource source);
  /// The socket is removed and all connections end.
  ~ControlServer() override;
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  /// Listens in that folder under the process id. The reason when it cannot.
  [[nodiscard]] std::optional<std::string> listen(const std::filesystem::path& folder);

  /// Where it listens.
  const std::filesystem::path& socket() const { return socket_; }

 private:
  static gboolean onIncoming(GSocketService* service, GSocketConnection* connection,
                             GObject* source, gpointer server);
  void accept(GSocketConnection* connection);
  const ControlSource& source() const override { return source_; }
  void ended(ControlConnection* connection) override { connections_.erase(connection); }

  ControlSource source_;
  GOwned<GSocketService> service_;
  std::filesystem::path socket_;
  std::map<ControlConnection*, std::shared_ptr<ControlConnection>> connections_;
};

/// A server that listens for the processes of this user; null when there can be none, with a line
/// for people in `text`.
std::unique_ptr<ControlServer> offerControl(ControlSource source, std::string& text);

}  // namespace morvik::devkit
