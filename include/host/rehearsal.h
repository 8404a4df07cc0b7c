// What the launcher does once so that no application needs to: it starts one on trial, in itself.
#pragma once

#include <v8.h>

namespace morvik {

/// Makes the launcher's process a good one to fork: drops the pages of programs and libraries that
/// only their linking needed, then does what every application does from its descriptor to its
/// first message, without a file, a record in the log or a connection. The libraries' first-time
/// work and their pages are then there for all applications, which share them. An isolate must be
/// entered. Returns a context for the application that comes, in which nothing has run.
v8::Local<v8::Context> rehearse();

}  // namespace morvik
