// What the serial feature holds ready without a script name.
#pragma once

#include <zeph-message.pb.h>

#include "devices/listener.h"
#include "host/script.h"

namespace morvik {

/// Hears each line from a serial port: the function gets its data as a String.
class SerialMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override;
};

/// Script functions. The current port is the one that morvik.serial.open__ opened last.

/// (callback, optional base): adds a SerialMsgCallback, also outside interactive mode. With a base,
/// a String, an empty line of the current port goes to the server.
void addPlainListener(const Args& args);

/// (data): writes to the current port, with the base "h" or "a", and tells so on standard output.
void writeH(const Args& args);
void writeA(const Args& args);

/// (port, baud): opens, without looking at the arguments; the current port stays what it is.
void openWithoutDefaults(const Args& args);

}  // namespace morvik
