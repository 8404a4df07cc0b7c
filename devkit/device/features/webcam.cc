// The camera: every photo is the same small picture.
#include <chrono>

#include "device/handlers.h"
#include "device/media-files.h"

namespace morvik::devkit {
namespace {

constexpr std::chrono::milliseconds kTimeOfAPhoto{500};

}  // namespace

void tellOfFile(Device& device, zeph::ZephMsg& event, const char* path,
                const std::optional<std::string>& problem) {
  if (problem) {
    event.mutable_event()->set_code(zeph::ERROR);
    event.mutable_event()->set_description(*problem);
  } else {
    device.note(std::string("wrote ") + path);
  }
}

void answerWebcam(const Exchange& exchange) {
  Device& device = exchange.device();
  device.state().photo = exchange.request().webcam().photo();
  exchange.undertake(Work::kPhoto, kTimeOfAPhoto, [&device](zeph::ZephMsg& event) {
    if (event.event().code() != zeph::TERMINATED) return;
    tellOfFile(device, event, kPicturePath, writePicture());
  });
  exchange.respond(zeph::OK);
}

}  // namespace morvik::devkit
