// The camera: every photo is the same small picture, or the one that the user chose.
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/features/left-file.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

constexpr std::chrono::milliseconds kTimeOfAPhoto{500};

void answer(const Exchange& exchange) {
  Device& device = exchange.device();
  device.change("photo",
                [&](DeviceState& state) { state.photo = exchange.request().webcam().photo(); });
  exchange.undertake(Work::kPhoto, kTimeOfAPhoto, [&device](zeph::ZephMsg& event) {
    leaveFile(device, event, kPicture, device.state().picture);
  });
  exchange.respond(zeph::OK);
}

std::string atAGlance(const DeviceView& view) {
  const ChosenFile& picture = view.state.picture;
  std::string shows = picture.bytes ? "photos show " + picture.path : "";
  if (underwayIn(view, Work::kPhoto) == nullptr) return shows;
  return "takes" + quotedIfAny(view.state.photo) + (shows.empty() ? "" : ", " + shows);
}

void show(const DeviceView& view, JsonObject& whole) {
  JsonObject shown = whole.object("photo");
  shown.text("name", view.state.photo);
  if (view.state.picture.bytes) shown.text("file", view.state.picture.path);
}

void choosePicture(Stimulation& stimulation) {
  const auto chosen = chosenBy(stimulation, kPicture);
  if (!chosen) return;
  Device& device = stimulation.device();
  device.change("photo", [&](DeviceState& state) { state.picture = *chosen; });
  device.note("the picture that the camera takes: " + inWords(*chosen));
}

constexpr Argument kFile[] = {kMediaFile};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kWebcamFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {
    {"picture", Stimulus::Group::kAround, Stimulus::For::kDevice, kFile,
     "choose the JPEG file that photos show; alone, the device's own again", choosePicture}};
constexpr Glance kGlances[] = {{"camera", atAGlance}};

}  // namespace

constinit const Feature kWebcamFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
