// The script functions of the message channel, which every application has.
#pragma once

#include "host/script.h"

namespace morvik {

void connect(const Args& args);  ///< morvik.connect(host, port)
void start(const Args& args);    ///< morvik.start(callback, object)
void stop(const Args& args);     ///< morvik.stop()
void ping(const Args& args);     ///< ping(callback) and morvik.ping(callback)
void info(const Args& args);     ///< morvik.info(callback)

/// Sets an interactive id without asking the server. Bound to no script name.
void SetInteractive(const Args& args);

}  // namespace morvik
