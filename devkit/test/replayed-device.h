// A recording in the place of the device of a test.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "device/scheduler.h"
#include "run/session-device.h"

namespace morvik::devkit {

/// Answers as the device in the recording did, in time of the caller's own, which must outlive it.
/// Takes no stimuli: what happened stands in the recording. Its view is what the messages tell.
/// Null when the file is no recording, with its line and the reason in `trouble`.
std::unique_ptr<SessionDevice> makeReplayedDevice(const std::filesystem::path& recording,
                                                  Scheduler& scheduler, std::string& trouble);

}  // namespace morvik::devkit
