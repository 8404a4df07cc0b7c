// The camera: every photo is the same small picture.
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/features/left-file.h"
#include "device/media-files.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

constexpr std::chrono::milliseconds kTimeOfAPhoto{500};

void answer(const Exchange& exchange) {
  Device& device = exchange.device();
  device.change("photo",
                [&](DeviceState& state) { state.photo = exchange.request().webcam().photo(); });
  exchange.undertake(Work::kPhoto, kTimeOfAPhoto, [&device](zeph::ZephMsg& event) {
    leaveFile(device, event, kPicturePath, writePicture);
  });
  exchange.respond(zeph::OK);
}

void show(const DeviceView& view, JsonObject& whole) {
  whole.object("photo").text("name", view.state.photo);
}

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kWebcamFieldNumber, Command::Needs::kGrant, answer}};

}  // namespace

constinit const Feature kWebcamFeature = {.commands = kCommands, .show = show};

}  // namespace morvik::devkit
