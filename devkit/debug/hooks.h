// Ties the debugger to the host.
#pragma once

#include "debug/inspect-options.h"

namespace morvik::devkit {

/// Before the host begins: what its applications are to offer. Nothing happens without a port.
void setUpDebugging(const InspectOptions& options);

}  // namespace morvik::devkit
