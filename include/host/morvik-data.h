// The root of one application: everything that a script function needs to find.
#pragma once

#include <glib.h>
#include <v8.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/launch-options.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

struct Descriptor;

/// One application. The launcher makes one for each launch line; only the copy in a forked child
/// goes on to live. Script functions find it in internal field 0 of the global object. It is itself
/// a listener: the message pump calls it, and it passes each message to the script's listeners.
class MorvikData : public ZephMsgListener {
 public:
  MorvikData() = default;
  MorvikData(const MorvikData&) = delete;
  MorvikData& operator=(const MorvikData&) = delete;

  /// Splits a launch line `appName launchType instanceName` at its first two blanks.
  void setCmdLine(const char* line);

  /// Appends a listener, which then belongs to the list until it answers false.
  void addListener(std::unique_ptr<ZephMsgListener> listener);

  /// Offers the message to every listener in the order of registration, and removes and releases
  /// those that answer false. Its result is not used.
  bool onMessage(const zeph::ZephMsg& message) override;

  /// Releases all listeners, while the script engine still stands.
  void releaseListeners();

  std::int32_t socket = -1;                    ///< connection to the device server, -1: none
  std::optional<std::string> interactiveID;    ///< set while interactive mode is granted
  GMainLoop* mainLoop = nullptr;               ///< owned by runApp
  GList* listeners = nullptr;                  ///< owned ZephMsgListeners, in order
  std::string appName;                         ///< first word: also the application's folder
  std::string launchType;                      ///< second word
  std::string instanceName;                    ///< the rest of the line
  std::string cmdline;                         ///< the launch line, whole
  LaunchOptions* options = nullptr;            ///< the launcher's, not owned
  std::shared_ptr<Descriptor> descriptor;      ///< set by startApp, shared with nobody
  v8::Eternal<v8::ObjectTemplate> dataObject;  ///< what `file.read` makes, from the first one on
};

}  // namespace morvik
