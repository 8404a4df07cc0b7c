// The sockets and the replay told of each other.
#include "replay/replay-server.h"

namespace morvik::devkit {

ReplayServer::ReplayServer(Recording recording, Scheduler* scheduler)
    : sockets_(static_cast<AppSockets::Owner&>(*this)),
      replay_(std::move(recording), sockets_, scheduler != nullptr ? *scheduler : agenda_) {}

}  // namespace morvik::devkit
