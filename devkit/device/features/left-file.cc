// A file, or the reason why there is none.
#include "device/features/left-file.h"

namespace morvik::devkit {

void leaveFile(Device& device, zeph::ZephMsg& event, const char* path,
               std::optional<std::string> (*write)()) {
  if (event.event().code() != zeph::TERMINATED) return;
  if (const auto problem = write()) {
    event.mutable_event()->set_code(zeph::ERROR);
    event.mutable_event()->set_description(*problem);
  } else {
    device.note(std::string("wrote ") + path);
  }
}

}  // namespace morvik::devkit
