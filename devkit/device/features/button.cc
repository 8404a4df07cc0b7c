// The button.
#include "device/features/features.h"
#include "device/stimulation.h"

namespace morvik::devkit {
namespace {

void press(Stimulation& stimulation) {
  zeph::ZephMsg message;
  message.mutable_buttoncallback()->set_type(
      stimulation.choice<zeph::ButtonCallback::Type>("type"));
  if (stimulation.understood()) stimulation.send(message);
}

constexpr Argument kPress[] = {{.name = "type",
                                .what = "the kind of press",
                                .kind = Argument::Kind::kChoice,
                                .choices = namesOf<zeph::ButtonCallback::Type_descriptor>}};

constexpr Stimulus kStimuli[] = {{"button", Stimulus::Group::kBody, Stimulus::For::kApplications,
                                  kPress, "press the button", press}};

}  // namespace

constinit const Feature kButtonFeature = {.stimuli = kStimuli};

}  // namespace morvik::devkit
