// What commands have in common that leave a file behind.
#pragma once

#include <optional>

#include "device/device.h"
#include "device/media-files.h"
#include "device/stimulation.h"

namespace morvik::devkit {

/// At the end of such a command, whose event is about to be sent: writes the file, unless the
/// command was cut short, and notes it, or tells in the event why it cannot.
void leaveFile(Device& device, zeph::ZephMsg& event, const MediaKind& kind,
               const ChosenFile& chosen);

/// What a stimulus with the argument kMediaFile chooses: the user's file, or the device's own when
/// none is named. Nothing when it is not understood.
std::optional<ChosenFile> chosenBy(Stimulation& stimulation, const MediaKind& kind);

inline constexpr Argument kMediaFile = {.name = "file",
                                        .usage = "FILE",
                                        .what = "the file",
                                        .kind = Argument::Kind::kId,
                                        .needed = false};

/// "/home/anna/cat.jpg", or that it is the device's own.
std::string inWords(const ChosenFile& chosen);

}  // namespace morvik::devkit
