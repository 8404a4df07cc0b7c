// Where a received message goes.
#pragma once

#include "host/zeph-msg-listener.h"

namespace morvik {

class MorvikData;

/// First the reply function that awaits the message's correlationId; then, unless it is about
/// interactive mode, every listener. A notice that stops interactive mode arms the autokill timer.
void dispatch(MorvikData& instance, const zeph::ZephMsg& message);

}  // namespace morvik
