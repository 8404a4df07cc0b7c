// The dock's events for script functions. No script name is bound to them.
#pragma once

#include "devices/listener.h"

namespace morvik {

/// The script hears two numbers, the dock's status and its change, 0 where one is absent.
class DockMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override;
};

/// The script function that adds a DockMsgCallback.
void addDockListener(const Args& args);

}  // namespace morvik
