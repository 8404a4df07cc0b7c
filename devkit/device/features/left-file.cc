// A file, or the reason why there is none.
#include "device/features/left-file.h"

namespace morvik::devkit {

void leaveFile(Device& device, zeph::ZephMsg& event, const MediaKind& kind,
               const ChosenFile& chosen) {
  if (event.event().code() != zeph::TERMINATED) return;
  if (const auto problem = writeMedia(kind, chosen)) {
    event.mutable_event()->set_code(zeph::ERROR);
    event.mutable_event()->set_description(*problem);
  } else {
    device.note(std::string("wrote ") + kind.path + (chosen.bytes ? ": " + chosen.path : ""));
  }
}

std::optional<ChosenFile> chosenBy(Stimulation& stimulation, const MediaKind& kind) {
  std::optional<ChosenFile> chosen = ChosenFile{};
  if (stimulation.has(kMediaFile.name)) {
    std::string trouble;
    chosen = readMedia(kind, stimulation.text(kMediaFile.name), trouble);
    if (!chosen) stimulation.refuse(trouble);
  }
  return stimulation.understood() ? chosen : std::nullopt;
}

std::string inWords(const ChosenFile& chosen) {
  return chosen.bytes ? chosen.path : "the device's own";
}

}  // namespace morvik::devkit
